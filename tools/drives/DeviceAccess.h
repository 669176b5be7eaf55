// What only the device itself can tell, for when the device manager has no record of it.
//
// Every call opens the device anew and may send the drive commands that take seconds. An interface
// so that tests can stand in for a drive and count what it is asked. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct MediumFacts {
    bool present = false;
    bool optical = false;                  // an optical drive, not some other block device
    std::optional<std::uint16_t> profile;  // MMC profile; absent when the drive does not tell
    std::uint64_t bytes = 0;               // what an image of it holds
    bool audioOnly = false;
    bool blank = false;
};

class DeviceAccess {
public:
    enum class Ejected {
        Yes,
        Busy,       // another program, or a mount, has the device open
        Refused,    // the drive itself said no
        NoAccess,   // this user may not open the device
        NotADrive,  // the device has no tray
        Failed,
    };

    DeviceAccess() = default;
    DeviceAccess(const DeviceAccess&) = delete;
    DeviceAccess& operator=(const DeviceAccess&) = delete;
    virtual ~DeviceAccess() = default;

    // Never moves the tray. Absent when the device cannot be asked; *error is then the reason
    // ("Permission denied").
    virtual std::optional<MediumFacts> medium(const std::string& node, std::string* error) = 0;
    // The label of the file system on it; empty without one.
    virtual std::string label(const std::string& node) = 0;
    // Unlocks the door and opens the tray; also when it is empty. *error is the reason on Failed.
    virtual Ejected eject(const std::string& node, std::string* error) = 0;
};
