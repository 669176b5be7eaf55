#include "CommandOutcome.h"

#include <unistd.h>

#include <cstdlib>

#include "SmallFile.h"

CommandOutcome CommandOutcome::failed(const std::string& tool, const Failure& failure) {
    return {EXIT_FAILURE, {}, tool + ": " + failure.sentence + "\n"};
}

int CommandOutcome::print(const std::string& tool) const {
    SmallFile::writeAll(STDERR_FILENO, errors);
    if (const int error = SmallFile::writeAll(STDOUT_FILENO, output)) {
        SmallFile::writeAll(STDERR_FILENO,
                            failed(tool, Failure::ofErrno(error, "standard output")).errors);
        return EXIT_FAILURE;
    }
    return status;
}
