// The command line of "shasum".
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

struct DigestCommand {
    int algorithm = 1;
    std::vector<std::string> files;  // at least one; "-" is standard input
    bool help = false;

    // Absent when the arguments are not a usage of it; *problem then says why.
    static std::optional<DigestCommand> parse(std::span<const char* const> arguments,
                                              std::string* problem);
};
