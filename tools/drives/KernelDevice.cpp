#include "KernelDevice.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "DescriptorHolder.h"
#include "FileSystemLabel.h"
#include "Mmc.h"
#include "OpticalCommands.h"

namespace {

namespace Profile = Mmc::Profile;

// Only these can be blank, and a read-only drive may take offence at being asked.
bool isRecordable(std::uint16_t profile) {
    return profile != Profile::cdRom && profile != Profile::dvdRom && profile != Profile::bdRom &&
           profile != Profile::hdDvdRom;
}

std::uint64_t deviceBytes(int device) {
    std::uint64_t bytes = 0;
    return ioctl(device, BLKGETSIZE64, &bytes) == 0 ? bytes : 0;
}

// Opening without waiting for a disc neither closes the tray nor locks the door.
DescriptorHolder openQuietly(const std::string& node) {
    return DescriptorHolder(open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

}  // namespace

std::optional<MediumFacts> KernelDevice::medium(const std::string& node, std::string* error) {
    const DescriptorHolder device = openQuietly(node);
    MediumFacts medium;
    if (!device.isOpen()) {
        if (errno == ENOMEDIUM) {
            return medium;
        }
        *error = std::strerror(errno);
        return std::nullopt;
    }
    const int status = ioctl(device.get(), CDROM_DRIVE_STATUS, CDSL_CURRENT);
    if (status < 0) {
        medium.bytes = deviceBytes(device.get());
        medium.present = medium.bytes > 0;
        return medium;
    }
    medium.optical = true;
    // Very old drives answer "no information": then a profile or a size speaks for a disc.
    if (status != CDS_DISC_OK && status != CDS_NO_INFO) {
        return medium;
    }
    medium.profile = OpticalCommands::currentProfile(device.get());
    medium.present =
        status == CDS_DISC_OK || medium.profile.value_or(Profile::none) != Profile::none;
    if (!medium.present) {
        return medium;
    }
    medium.blank = medium.profile && isRecordable(*medium.profile) &&
                   OpticalCommands::discIsBlank(device.get());
    if (medium.blank) {
        return medium;
    }
    // Only a CD has sound beside or instead of data.
    const std::uint16_t profile = medium.profile.value_or(Profile::cdRom);
    const DiscLayout layout = profile >= Profile::cdRom && profile <= Profile::cdRw
                                  ? OpticalCommands::layout(device.get())
                                  : DiscLayout{};
    medium.audioOnly = layout.kind == DiscLayout::Kind::Audio;
    if (layout.kind == DiscLayout::Kind::Data) {
        medium.bytes = deviceBytes(device.get());
    } else {
        medium.bytes = std::uint64_t{layout.sectors} *
                       (medium.audioOnly ? Mmc::audioSectorBytes : Mmc::dataSectorBytes);
    }
    return medium;
}

std::string KernelDevice::label(const std::string& node) {
    const DescriptorHolder device = openQuietly(node);
    return device.isOpen() ? FileSystemLabel::read(device.get()) : std::string();
}

DeviceAccess::Ejected KernelDevice::eject(const std::string& node, std::string* error) {
    const DescriptorHolder device = openQuietly(node);
    if (!device.isOpen()) {
        *error = std::strerror(errno);
        return errno == EACCES || errno == EPERM ? Ejected::NoAccess : Ejected::Failed;
    }
    if (ioctl(device.get(), CDROM_DRIVE_STATUS, CDSL_CURRENT) < 0 && errno == ENOTTY) {
        return Ejected::NotADrive;
    }
    // The device manager locks the door of every drive that it has looked at. When this fails,
    // ejecting fails too and says why.
    ioctl(device.get(), CDROM_LOCKDOOR, 0);
    const int result = ioctl(device.get(), CDROMEJECT, 0);
    const int reason = errno;
    *error = std::strerror(reason);
    return ejected(result, reason);
}

DeviceAccess::Ejected KernelDevice::ejected(int result, int error) {
    if (result == 0) {
        return Ejected::Yes;
    }
    // The kernel hands a drive's refusal on as a positive number, not as -1.
    if (result > 0) {
        return Ejected::Refused;
    }
    switch (error) {
        case EBUSY:
            return Ejected::Busy;
        case EACCES:
        case EPERM:
            return Ejected::NoAccess;
        case ENOTTY:
        case ENOSYS:
            return Ejected::NotADrive;
        default:
            return Ejected::Failed;
    }
}
