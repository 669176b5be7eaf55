// Where a device is mounted, from the kernel's table of mounts. Pure but for read(); any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace MountTable {

// The folders on which the device with this number ("11:0") is mounted, the one mounted last first,
// in the text of a process's mountinfo file.
std::vector<std::string> mountPoints(std::string_view table, std::string_view deviceNumber);

// The same for this process's own table under the folder ("/proc").
std::vector<std::string> read(const std::string& processes, std::string_view deviceNumber);

// "\040" and its like, as the kernel writes blanks, turned back.
std::string decoded(std::string_view encoded);

}  // namespace MountTable
