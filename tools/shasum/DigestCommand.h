// The command line of "shasum".
#pragma once

#include <span>
#include <string>
#include <vector>

#include "Result.h"

struct DigestCommand {
    int algorithm = 1;
    std::vector<std::string> files;  // at least one; "-" is standard input
    bool help = false;

    // Fails with Usage.
    static Result<DigestCommand> parse(std::span<const char* const> arguments);
};
