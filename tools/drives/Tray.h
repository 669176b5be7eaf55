// Opens a drive's tray, after unmounting what is mounted from the disc in it.
//
// Owned by one run of a tool; one thread; blocks until the drive is done, which takes seconds.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "DeviceAccess.h"
#include "DeviceHolders.h"
#include "DiscService.h"
#include "SystemPaths.h"

class Tray final {
public:
    // The device access and the service must outlive this.
    Tray(SystemPaths paths, std::optional<std::string> practiceFolder, DeviceAccess& devices,
         DiscService& service);

    // Opens the tray of the drive with this name ("sr0"); an empty one opens too. A disc that is in
    // use or being imaged stays mounted or in its drive, and the failure's sentence names who uses
    // it.
    Result<void> open(const std::string& node);

private:
    Result<void> openPractice() const;
    Result<void> openDrive(const std::string& node);
    Result<void> unmountAll(const std::string& node);
    Failure unmountFailure(const std::string& node, const std::vector<std::string>& folders,
                           const Failure& cause) const;
    std::vector<DeviceHolder> holdersOf(const std::string& node) const;
    std::string nodePath(const std::string& node) const;
    std::string deviceNumber(const std::string& node) const;

    SystemPaths m_paths;
    std::optional<std::string> m_practiceFolder;
    DeviceAccess& m_devices;
    DiscService& m_service;
};
