// The command "diskutil": what is on one disc, and ejecting it.
//
// One run of the program; main() only wires it to the system. One thread.
#pragma once

#include <string>
#include <vector>

#include "CommandOutcome.h"
#include "DriveQuery.h"
#include "Tray.h"

class DiskTool final {
public:
    // Both must outlive this.
    DiskTool(const DriveQuery& drives, Tray& tray);

    CommandOutcome run(const std::vector<std::string>& arguments);

private:
    CommandOutcome eject(const std::string& device);

    const DriveQuery& m_drives;
    Tray& m_tray;
};
