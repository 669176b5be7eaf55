// Which programs keep a disc busy: that have the device or a file on the disc open, or stand in one
// of its folders.
//
// Only the processes that this user may look into are seen. Stateless; any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct DeviceHolder {
    int process = 0;
    std::string program;  // as valid UTF-8

    bool operator==(const DeviceHolder&) const = default;
};

namespace DeviceHolders {

// The holders of the node ("/dev/sr0") or of anything in these folders, by rising process number,
// without this process. `processes` is "/proc".
std::vector<DeviceHolder> find(const std::string& processes, const std::string& node,
                               const std::vector<std::string>& mountPoints);

// The program that images the disc in the device that this process has open with the descriptor:
// hdiutil, or the program of this project that started it. Absent without one.
std::optional<DeviceHolder> imagingProgram(const std::string& processes, int descriptor);

// "/dev/sr0 is in use by vlc (process 12) and dd (process 34)."; "another program" for none.
std::string sentence(const std::string& node, const std::vector<DeviceHolder>& holders);

}  // namespace DeviceHolders
