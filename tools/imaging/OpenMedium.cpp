#include "OpenMedium.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "AudioMedium.h"
#include "DeviceMedium.h"
#include "OpticalDrive.h"
#include "PracticeMedium.h"

namespace {

std::unique_ptr<Medium> openPractice(const std::string& device, std::string* problem) {
    const auto folder = PracticeDrive::chosenFolder();
    if (!folder) {
        *problem = device + ": " + std::strerror(ENOENT);
        return nullptr;
    }
    const auto drive = PracticeDrive::read(*folder, problem);
    if (!drive) {
        return nullptr;
    }
    if (drive->noDrive) {
        *problem = device + ": " + std::strerror(ENOENT);
        return nullptr;
    }
    if (!drive->disc) {
        *problem = "there is no disc in " + device;
        return nullptr;
    }
    return PracticeMedium::open(*drive, problem);
}

std::unique_ptr<Medium> openDevice(const std::string& device, std::string* problem) {
    struct stat status {};
    if (stat(device.c_str(), &status) != 0) {
        *problem = device + ": " + std::strerror(errno);
        return nullptr;
    }
    if (!S_ISBLK(status.st_mode)) {
        *problem = device + ": it is not a block device";
        return nullptr;
    }
    auto drive = OpticalDrive::open(device, problem);
    if (!problem->empty()) {
        return nullptr;
    }
    if (!drive) {
        return DeviceMedium::open(device, nullptr, DiscLayout{}, problem);
    }
    if (drive->discIsBlank()) {
        *problem = "the disc in " + device + " is blank";
        return nullptr;
    }
    const DiscLayout layout = drive->layout();
    if (layout.kind == DiscLayout::Kind::Audio) {
        return std::make_unique<AudioMedium>(std::move(drive), layout);
    }
    return DeviceMedium::open(device, std::move(drive), layout, problem);
}

}  // namespace

std::unique_ptr<Medium> openMedium(const std::string& device, std::string* problem) {
    auto medium = device == PracticeDrive::deviceNode ? openPractice(device, problem)
                                                      : openDevice(device, problem);
    if (medium && medium->capacity() == 0) {
        *problem = "the disc in " + device + " holds no data";
        return nullptr;
    }
    return medium;
}
