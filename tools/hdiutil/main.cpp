#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "CreateCommand.h"
#include "ImagingJob.h"
#include "SmallFile.h"

namespace {

constexpr int usageError = 64;
constexpr const char* usage =
    "Usage: hdiutil create -srcdevice /dev/NODE -format UDTO [-puppetstrings] -o FILE\n"
    "Makes a raw image of a disc; \".cdr\" is added to FILE unless it is there.\n"
    "  -puppetstrings   prints \"PERCENT:<number>\" lines, -1 while unknown\n";

// Otherwise the image could become standard output.
void keepStandardStreamsOpen() {
    while (fcntl(STDIN_FILENO, F_GETFD) < 0 || fcntl(STDOUT_FILENO, F_GETFD) < 0 ||
           fcntl(STDERR_FILENO, F_GETFD) < 0) {
        if (open("/dev/null", O_RDWR) < 0) {
            return;
        }
    }
}

// Whoever started it may be deaf to the signal, and a child is so too unless it says otherwise.
void heedTermination() {
    std::signal(SIGTERM, SIG_DFL);
    sigset_t termination;
    sigemptyset(&termination);
    sigaddset(&termination, SIGTERM);
    sigprocmask(SIG_UNBLOCK, &termination, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    keepStandardStreamsOpen();
    heedTermination();
    // Both then are errors of a write, which can be answered.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);

    const std::vector<const char*> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (arguments.size() == 1 && std::string_view(arguments[0]) == "--help") {
        return SmallFile::writeAll(STDOUT_FILENO, usage) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    Result<CreateCommand> command = Failure{Failure::Kind::Usage, "the only command is create"};
    if (!arguments.empty() && std::string_view(arguments[0]) == "create") {
        command = CreateCommand::parse(std::span(arguments).subspan(1));
    }
    if (!command) {
        SmallFile::writeAll(STDERR_FILENO, "hdiutil: " + command.failure().sentence + "\n" + usage);
        return usageError;
    }
    return ImagingJob(*command).run();
}
