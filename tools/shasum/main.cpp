#include <openssl/crypto.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "DigestCommand.h"
#include "FileDigest.h"
#include "WatchedParent.h"

namespace {

constexpr int usageError = 64;
constexpr const char* usage =
    "Usage: shasum [-a 1|224|256|384|512] [FILE]...\n"
    "Prints the SHA digest of each file, read from its disk; of standard input for \"-\".\n";

bool print(const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
           std::fflush(stdout) == 0;
}

int digestAll(const DigestCommand& command) {
    int status = EXIT_SUCCESS;
    for (const auto& file : command.files) {
        const auto digest = FileDigest::ofFile(file, command.algorithm);
        if (!digest) {
            std::fprintf(stderr, "shasum: %s: %s\n", file.c_str(),
                         digest.failure().sentence.c_str());
            status = EXIT_FAILURE;
        } else if (!print(*digest + "  " + file + "\n")) {
            std::perror("shasum: standard output");
            return EXIT_FAILURE;
        }
    }
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    // The system-wide configuration of OpenSSL has nothing to say here and takes time to read.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
    const std::vector<const char*> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const auto command = DigestCommand::parse(arguments);
    if (!command) {
        std::fprintf(stderr, "shasum: %s\n%s", command.failure().sentence.c_str(), usage);
        return usageError;
    }
    if (command->help) {
        return print(usage) ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (WatchedParent().isGone()) {
        std::fputs("shasum: the program that started it has ended\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        std::thread([] {
            WatchedParent().waitUntilGone();
            _exit(EXIT_FAILURE);
        }).detach();
        return digestAll(*command);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "shasum: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
