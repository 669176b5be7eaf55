// The command "drutil": the default drive's status, and its tray.
//
// One run of the program; main() only wires it to the system. One thread.
#pragma once

#include <string>
#include <vector>

#include "CommandOutcome.h"
#include "DriveQuery.h"
#include "Tray.h"

class DriveTool final {
public:
    // Both must outlive this.
    DriveTool(const DriveQuery& drives, Tray& tray);

    CommandOutcome run(const std::vector<std::string>& arguments);

private:
    CommandOutcome status() const;
    CommandOutcome eject();

    const DriveQuery& m_drives;
    Tray& m_tray;
};
