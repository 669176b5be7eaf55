// The command line of "hdiutil create".
#pragma once

#include <span>
#include <string>

#include "Result.h"

struct CreateCommand {
    std::string device;  // such as "/dev/sr0"
    std::string image;   // the file to write, with ".cdr" at its end
    bool progress = false;

    // Reads the arguments after "create". Fails with Usage.
    static Result<CreateCommand> parse(std::span<const char* const> arguments);
};
