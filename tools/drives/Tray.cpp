#include "Tray.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "DescriptorHolder.h"
#include "DeviceLock.h"
#include "DriveQuery.h"
#include "MountTable.h"
#include "PracticeDrive.h"
#include "SmallFile.h"
#include "Utf8.h"

namespace {

// Whoever may not open the device learns that from the eject itself.
Result<void> checkThatNobodyReads(const std::string& path, const std::string& device,
                                  const std::string& processes) {
    const DescriptorHolder file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return file.isOpen() ? DeviceLock::checkThatNobodyReads(file.get(), device, processes)
                         : Result<void>();
}

}  // namespace

Tray::Tray(SystemPaths paths, std::optional<std::string> practiceFolder, DeviceAccess& devices,
           DiscService& service)
    : m_paths(std::move(paths)),
      m_practiceFolder(std::move(practiceFolder)),
      m_devices(devices),
      m_service(service) {}

Result<void> Tray::open(const std::string& node) {
    if (m_practiceFolder && "/dev/" + node == PracticeDrive::deviceNode) {
        return openPractice();
    }
    return openDrive(node);
}

Result<void> Tray::openPractice() const {
    const auto drive = PracticeDrive::read(*m_practiceFolder);
    if (!drive) {
        return drive.failure();
    }
    if (drive->noDrive) {
        return Failure{Failure::Kind::NoDrive, DriveQuery::noDriveSentence};
    }
    if (drive->failEject) {
        return Failure{Failure::Kind::Refused, "The practice drive refused to open its tray."};
    }
    if (!drive->disc) {
        return {};
    }
    if (auto idle = checkThatNobodyReads(drive->folder + "/" + PracticeDrive::lockFile,
                                         PracticeDrive::deviceNode, m_paths.processes);
        !idle) {
        return idle;
    }
    // The link itself moves, never the image that it points to.
    const std::string ejected = drive->folder + "/" + PracticeDrive::ejectedFile;
    if (rename(drive->disc->path.c_str(), ejected.c_str()) != 0) {
        return Failure::ofErrno(errno, drive->disc->path);
    }
    return {};
}

Result<void> Tray::openDrive(const std::string& node) {
    using Kind = Failure::Kind;
    const std::string shown = "/dev/" + node;
    const Failure notADrive{Kind::NoDrive, shown + " is not an optical drive."};
    // Before anything is unmounted: the name can be any disk's.
    if (!DriveQuery::isOpticalDrive(node)) {
        return notADrive;
    }
    if (auto idle = checkThatNobodyReads(nodePath(node), shown, m_paths.processes); !idle) {
        return idle;
    }
    if (auto unmounted = unmountAll(node); !unmounted) {
        return unmounted;
    }
    const auto ejected = m_devices.eject(nodePath(node));
    if (ejected) {
        return {};
    }
    Failure failure = ejected.failure();
    if (failure.kind == Kind::NoAccess) {
        // Who may not open the device may still be allowed to eject it by the service's rules.
        const auto served = m_service.eject(node);
        if (served) {
            return {};
        }
        if (served.failure().kind != Kind::Unavailable) {
            failure = served.failure();
        }
    }
    if (failure.kind == Kind::NoDrive) {
        return notADrive;
    }
    const auto holders = holdersOf(node);
    failure.sentence = failure.kind == Kind::Refused
                           ? shown + ": the drive refused to open its tray."
                           : shown + ": " + failure.sentence;
    if (failure.kind == Kind::Busy) {
        failure.sentence = DeviceHolders::sentence(shown, holders);
    } else if (!holders.empty()) {
        failure.sentence += " " + DeviceHolders::sentence(shown, holders);
    }
    return failure;
}

Result<void> Tray::unmountAll(const std::string& node) {
    const std::string number = deviceNumber(node);
    if (number.empty()) {
        return {};
    }
    // Each round takes one mount away; a table that does not get shorter ends it.
    std::size_t before = SIZE_MAX;
    bool serviceHelps = true;
    for (;;) {
        const auto folders = MountTable::read(m_paths.processes, number);
        if (folders.empty()) {
            return {};
        }
        if (folders.size() >= before && !serviceHelps) {
            return Failure{Failure::Kind::System,
                           "/dev/" + node + " is still mounted on " + folders.front() + "."};
        }
        serviceHelps = serviceHelps && folders.size() < before;
        before = folders.size();
        Result<void> unmounted;
        if (serviceHelps) {
            unmounted = m_service.unmount(node);
            serviceHelps = unmounted || unmounted.failure().kind != Failure::Kind::Unavailable;
        }
        if (!serviceHelps) {
            unmounted = m_service.unmountFolder(folders.front());
        }
        if (!unmounted) {
            return unmountFailure(node, folders, unmounted.failure());
        }
    }
}

Failure Tray::unmountFailure(const std::string& node, const std::vector<std::string>& folders,
                             const Failure& cause) const {
    // The service does not always tell "busy" from other failures, so look in any case.
    const auto holders = DeviceHolders::find(m_paths.processes, nodePath(node), folders);
    const std::string shown = "/dev/" + node;
    if (cause.kind == Failure::Kind::Busy || !holders.empty()) {
        return {Failure::Kind::Busy, DeviceHolders::sentence(shown, holders)};
    }
    return {cause.kind, shown + " is mounted on " + folders.front() +
                            " and cannot be unmounted: " + cause.sentence};
}

std::vector<DeviceHolder> Tray::holdersOf(const std::string& node) const {
    const auto folders = MountTable::read(m_paths.processes, deviceNumber(node));
    return DeviceHolders::find(m_paths.processes, nodePath(node), folders);
}

std::string Tray::nodePath(const std::string& node) const {
    return m_paths.nodes + "/" + node;
}

std::string Tray::deviceNumber(const std::string& node) const {
    const auto text = SmallFile::read(m_paths.blockDevices + "/" + node + "/dev");
    return std::string(Utf8::trimmed(text.value_or("")));
}
