#include "CommandOutcome.h"

#include <unistd.h>

#include <cstdlib>

#include "SmallFile.h"

CommandOutcome CommandOutcome::failed(const std::string& tool, const Failure& failure) {
    return {EXIT_FAILURE, {}, tool + ": " + failure.sentence + "\n"};
}

int CommandOutcome::print() const {
    SmallFile::writeAll(STDERR_FILENO, errors);
    return SmallFile::writeAll(STDOUT_FILENO, output) == 0 ? status : EXIT_FAILURE;
}
