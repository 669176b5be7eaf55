// The text of "drutil status". Pure; any thread.
#pragma once

#include <string>

#include "DriveFacts.h"

namespace StatusReport {

// The drive's table (8, 16 and 4 characters wide columns), a blank line, and the line with the
// disc's type and device; that line names no device when the tray is empty.
std::string text(const DriveFacts& drive);

}  // namespace StatusReport
