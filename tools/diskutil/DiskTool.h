// The command "diskutil": what is on one disc, and ejecting it.
//
// One run of the program; main() only wires it to the system. One thread.
#pragma once

#include <string>
#include <vector>

#include "DriveQuery.h"
#include "Tray.h"

class DiskTool final {
public:
    // Both must outlive this.
    DiskTool(const DriveQuery& drives, Tray& tray);

    // Gives the exit status; *output is for standard output, *errors for standard error.
    int run(const std::vector<std::string>& arguments, std::string* output, std::string* errors);

private:
    // The drive with this device, with a disc in it; else absent, with the reason.
    std::optional<DriveFacts> driveWithDisc(const std::string& device, std::string* errors) const;
    int eject(const std::string& device, std::string* output, std::string* errors);

    const DriveQuery& m_drives;
    Tray& m_tray;
};
