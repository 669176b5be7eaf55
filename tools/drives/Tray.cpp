#include "Tray.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "DeviceHolders.h"
#include "DriveQuery.h"
#include "MountTable.h"
#include "PracticeDrive.h"
#include "SmallFile.h"
#include "Utf8.h"

Tray::Tray(SystemPaths paths, std::optional<std::string> practiceFolder, DeviceAccess& devices,
           DiscService& service)
    : m_paths(std::move(paths)),
      m_practiceFolder(std::move(practiceFolder)),
      m_devices(devices),
      m_service(service) {}

bool Tray::open(const std::string& node, std::string* problem) {
    if (m_practiceFolder && "/dev/" + node == PracticeDrive::deviceNode) {
        return openPractice(problem);
    }
    return openDrive(node, problem);
}

bool Tray::openPractice(std::string* problem) const {
    const auto drive = PracticeDrive::read(*m_practiceFolder, problem);
    if (!drive) {
        return false;
    }
    if (drive->noDrive) {
        *problem = "No optical drive found.";
        return false;
    }
    if (drive->failEject) {
        *problem = "The practice drive refused to open its tray.";
        return false;
    }
    if (!drive->disc) {
        return true;
    }
    // The link itself moves, never the image that it points to.
    const std::string ejected = drive->folder + "/" + PracticeDrive::ejectedFile;
    if (rename(drive->disc->path.c_str(), ejected.c_str()) != 0) {
        *problem = drive->disc->path + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

bool Tray::openDrive(const std::string& node, std::string* problem) {
    // Before anything is unmounted: the name can be any disk's.
    if (!DriveQuery::isOpticalDrive(node)) {
        *problem = "/dev/" + node + " is not an optical drive.";
        return false;
    }
    if (!unmountAll(node, problem)) {
        return false;
    }
    const std::string shown = "/dev/" + node;
    std::string reason;
    switch (m_devices.eject(nodePath(node), &reason)) {
        case DeviceAccess::Ejected::Yes:
            return true;
        case DeviceAccess::Ejected::Busy:
            *problem = busySentence(node);
            return false;
        case DeviceAccess::Ejected::Refused:
            *problem = shown + ": the drive refused to open its tray.";
            return false;
        case DeviceAccess::Ejected::NotADrive:
            *problem = shown + " is not an optical drive.";
            return false;
        case DeviceAccess::Ejected::NoAccess:
            break;
        case DeviceAccess::Ejected::Failed:
            *problem = shown + ": " + reason;
            return false;
    }
    // Who may not open the device may still be allowed to eject it by the service's rules.
    std::string answer;
    const DiscService::Result result = m_service.eject(node, &answer);
    if (result == DiscService::Result::Busy) {
        *problem = busySentence(node);
    } else if (result == DiscService::Result::Failed) {
        *problem = shown + ": " + answer;
    } else {
        *problem = shown + ": " + reason;
    }
    return result == DiscService::Result::Done;
}

bool Tray::unmountAll(const std::string& node, std::string* problem) {
    const std::string number = deviceNumber(node);
    if (number.empty()) {
        return true;
    }
    // Each round takes one mount away; a table that does not get shorter ends it.
    std::size_t before = SIZE_MAX;
    bool serviceHelps = true;
    for (;;) {
        const auto folders = MountTable::read(m_paths.processes, number);
        if (folders.empty()) {
            return true;
        }
        if (folders.size() >= before && !serviceHelps) {
            *problem = "/dev/" + node + " is still mounted on " + folders.front() + ".";
            return false;
        }
        serviceHelps = serviceHelps && folders.size() < before;
        before = folders.size();
        std::string reason;
        auto result = DiscService::Result::Unavailable;
        if (serviceHelps) {
            result = m_service.unmount(node, &reason);
            serviceHelps = result != DiscService::Result::Unavailable;
        }
        if (!serviceHelps) {
            result = m_service.unmountFolder(folders.front(), &reason);
        }
        if (result != DiscService::Result::Done) {
            *problem = unmountProblem(node, folders, result, reason);
            return false;
        }
    }
}

std::string Tray::unmountProblem(const std::string& node, const std::vector<std::string>& folders,
                                 DiscService::Result result, const std::string& reason) const {
    // The service does not always tell "busy" from other failures, so look in any case.
    const auto holders = DeviceHolders::find(m_paths.processes, nodePath(node), folders);
    std::string sentence = "/dev/" + node;
    if (result == DiscService::Result::Busy || !holders.empty()) {
        return DeviceHolders::sentence(sentence, holders);
    }
    sentence += " is mounted on " + folders.front();
    return sentence + " and cannot be unmounted: " + reason;
}

std::string Tray::busySentence(const std::string& node) const {
    const auto folders = MountTable::read(m_paths.processes, deviceNumber(node));
    const auto holders = DeviceHolders::find(m_paths.processes, nodePath(node), folders);
    return DeviceHolders::sentence("/dev/" + node, holders);
}

std::string Tray::nodePath(const std::string& node) const {
    return m_paths.nodes + "/" + node;
}

std::string Tray::deviceNumber(const std::string& node) const {
    const auto text = SmallFile::read(m_paths.blockDevices + "/" + node + "/dev");
    return std::string(Utf8::trimmed(text.value_or("")));
}
