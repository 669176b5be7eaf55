#include "Tray.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <utility>

#include "DescriptorHolder.h"
#include "PracticeDrive.h"

Tray::Tray(SystemPaths paths, std::optional<std::string> practiceFolder)
    : m_paths(std::move(paths)), m_practiceFolder(std::move(practiceFolder)) {}

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

bool Tray::openDrive(const std::string& node, std::string* problem) const {
    const std::string path = m_paths.nodes + "/" + node;
    const DescriptorHolder device(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!device.isOpen()) {
        *problem = "/dev/" + node + ": " + std::strerror(errno);
        return false;
    }
    if (ioctl(device.get(), CDROM_DRIVE_STATUS, CDSL_CURRENT) < 0 && errno == ENOTTY) {
        *problem = "/dev/" + node + " is not an optical drive.";
        return false;
    }
    // The device manager locks the door of every drive that it has looked at.
    ioctl(device.get(), CDROM_LOCKDOOR, 0);
    // A drive that refuses gives a positive number, not -1.
    const int result = ioctl(device.get(), CDROMEJECT, 0);
    if (result != 0) {
        *problem = "/dev/" + node + ": " +
                   (result < 0 ? std::strerror(errno) : "the drive refused to open its tray");
        return false;
    }
    return true;
}
