// What only the device itself can tell, for when the device manager has no record of it.
//
// Every call opens the device anew and may send the drive commands that take seconds. An interface
// so that tests can stand in for a drive and count what it is asked. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Result.h"

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
    DeviceAccess() = default;
    DeviceAccess(const DeviceAccess&) = delete;
    DeviceAccess& operator=(const DeviceAccess&) = delete;
    virtual ~DeviceAccess() = default;

    // Never moves the tray. The failure's sentence names no device.
    virtual Result<MediumFacts> medium(const std::string& node) = 0;
    // The label of the file system on it; empty without one.
    virtual std::string label(const std::string& node) = 0;
    // Unlocks the door and opens the tray; also when it is empty, and also while other programs
    // read the disc (see DeviceLock). Fails with Busy, Refused, NoAccess, NoDrive (the device has
    // no tray) or System; the sentence names no device.
    virtual Result<void> eject(const std::string& node) = 0;
};
