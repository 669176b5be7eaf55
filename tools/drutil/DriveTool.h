// The command "drutil": the default drive's status, and its tray.
//
// One run of the program; main() only wires it to the system. One thread.
#pragma once

#include <string>
#include <vector>

#include "DriveQuery.h"
#include "Tray.h"

class DriveTool final {
public:
    // Both must outlive this.
    DriveTool(const DriveQuery& drives, Tray& tray);

    // Gives the exit status; *output is for standard output, *errors for standard error.
    int run(const std::vector<std::string>& arguments, std::string* output, std::string* errors);

private:
    int status(std::string* output, std::string* errors) const;
    int eject(std::string* errors);

    const DriveQuery& m_drives;
    Tray& m_tray;
};
