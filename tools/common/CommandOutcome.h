// What a run of a tool gives: its exit status and all its output. A plain value.
#pragma once

#include <string>

#include "Failure.h"

struct CommandOutcome {
    int status = 0;
    std::string output;  // for standard output
    std::string errors;  // for standard error

    // "drutil: No optical drive found." and the exit status for it.
    static CommandOutcome failed(const std::string& tool, const Failure& failure);

    // Writes both; the exit status for the process, a failure that standard error tells when the
    // output cannot be written.
    int print(const std::string& tool) const;
};
