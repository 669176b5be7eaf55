// Opens a drive's tray, after unmounting what is mounted from the disc in it.
//
// Owned by one run of a tool; one thread; blocks until the drive is done, which takes seconds.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "DeviceAccess.h"
#include "DiscService.h"
#include "SystemPaths.h"

class Tray final {
public:
    // The device access and the service must outlive this.
    Tray(SystemPaths paths, std::optional<std::string> practiceFolder, DeviceAccess& devices,
         DiscService& service);

    // Opens the tray of the drive with this name ("sr0"); an empty one opens too. False with the
    // reason, a sentence, in *problem; a disc that is in use stays mounted or in its drive and the
    // sentence names who uses it.
    bool open(const std::string& node, std::string* problem);

private:
    bool openPractice(std::string* problem) const;
    bool openDrive(const std::string& node, std::string* problem);
    bool unmountAll(const std::string& node, std::string* problem);
    std::string unmountProblem(const std::string& node, const std::vector<std::string>& folders,
                               DiscService::Result result, const std::string& reason) const;
    std::string busySentence(const std::string& node) const;
    std::string nodePath(const std::string& node) const;
    std::string deviceNumber(const std::string& node) const;

    SystemPaths m_paths;
    std::optional<std::string> m_practiceFolder;
    DeviceAccess& m_devices;
    DiscService& m_service;
};
