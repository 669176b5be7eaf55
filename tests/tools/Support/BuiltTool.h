// Runs a built program to its end, as the application would: argument list, no shell.
#pragma once

#include <map>
#include <string>
#include <vector>

struct ToolResult {
    int status = -1;  // the exit status; 128 and the signal's number when a signal ended it
    std::string output;
    std::string errors;
};

namespace BuiltTool {

using Environment = std::map<std::string, std::string>;

std::string drutil();
std::string diskutil();
std::string grantDiscAccess();

// With this test's environment, less the variables that choose a drive, plus the given ones.
ToolResult run(const std::string& program, const std::vector<std::string>& arguments,
               const Environment& environment = {});

}  // namespace BuiltTool
