// The command line of "hdiutil create".
#pragma once

#include <optional>
#include <span>
#include <string>

struct CreateCommand {
    std::string device;  // such as "/dev/sr0"
    std::string image;   // the file to write, with ".cdr" at its end
    bool progress = false;

    // Reads the arguments after "create". Absent when they are not a usage of it; *problem then
    // says why.
    static std::optional<CreateCommand> parse(std::span<const char* const> arguments,
                                              std::string* problem);
};
