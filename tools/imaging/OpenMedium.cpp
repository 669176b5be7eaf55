#include "OpenMedium.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "AudioMedium.h"
#include "DeviceLock.h"
#include "DeviceMedium.h"
#include "OpticalDrive.h"
#include "PracticeMedium.h"

namespace {

using MediumResult = Result<std::unique_ptr<Medium>>;

Failure badMedium(std::string sentence) {
    return {Failure::Kind::Medium, std::move(sentence)};
}

// The medium, opened while the file that stands for its device is locked against ejecting. Whoever
// may not open that file is told so by the opening of the medium.
template <typename Open>
MediumResult lockedMedium(DescriptorHolder lock, const std::string& device, Open open) {
    if (lock.isOpen()) {
        if (const auto held = DeviceLock::holdForReading(lock.get(), device); !held) {
            return held.failure();
        }
    }
    MediumResult medium = open();
    if (medium) {
        (*medium)->keepLock(std::move(lock));
    }
    return medium;
}

MediumResult openPractice(const std::string& device) {
    const auto folder = PracticeDrive::chosenFolder();
    if (!folder) {
        return Failure::ofErrno(ENOENT, device);
    }
    const auto drive = PracticeDrive::read(*folder);
    if (!drive) {
        return drive.failure();
    }
    if (drive->noDrive) {
        return Failure::ofErrno(ENOENT, device);
    }
    if (!drive->disc) {
        return badMedium("there is no disc in " + device);
    }
    const std::string lock = drive->folder + "/" + PracticeDrive::lockFile;
    return lockedMedium(DescriptorHolder(open(lock.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666)),
                        device, [&drive] { return PracticeMedium::open(*drive); });
}

MediumResult openDisc(const std::string& device) {
    auto drive = OpticalDrive::open(device);
    if (!drive) {
        return drive.failure().kind == Failure::Kind::NoDrive
                   ? DeviceMedium::open(device, nullptr, DiscLayout{})
                   : drive.failure();
    }
    if ((*drive)->discIsBlank()) {
        return badMedium("the disc in " + device + " is blank");
    }
    const DiscLayout layout = (*drive)->layout();
    if (layout.kind == DiscLayout::Kind::Audio) {
        return std::make_unique<AudioMedium>(std::move(*drive), layout);
    }
    return DeviceMedium::open(device, std::move(*drive), layout);
}

MediumResult openDevice(const std::string& device) {
    struct stat status {};
    if (stat(device.c_str(), &status) != 0) {
        return Failure::ofErrno(errno, device);
    }
    if (!S_ISBLK(status.st_mode)) {
        return Failure{Failure::Kind::NoDrive, device + ": it is not a block device"};
    }
    return lockedMedium(DescriptorHolder(open(device.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)),
                        device, [&device] { return openDisc(device); });
}

}  // namespace

MediumResult openMedium(const std::string& device) {
    auto medium = device == PracticeDrive::deviceNode ? openPractice(device) : openDevice(device);
    if (medium && (*medium)->capacity() == 0) {
        return badMedium("the disc in " + device + " holds no data");
    }
    return medium;
}
