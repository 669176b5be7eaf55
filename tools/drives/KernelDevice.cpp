#include "KernelDevice.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

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

Result<MediumFacts> KernelDevice::medium(const std::string& node) {
    const DescriptorHolder device = openQuietly(node);
    MediumFacts medium;
    if (!device.isOpen()) {
        if (errno == ENOMEDIUM) {
            return medium;
        }
        return Failure::ofErrno(errno);
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

Result<void> KernelDevice::eject(const std::string& node) {
    const DescriptorHolder device = openQuietly(node);
    if (!device.isOpen()) {
        return Failure::ofErrno(errno);
    }
    if (ioctl(device.get(), CDROM_DRIVE_STATUS, CDSL_CURRENT) < 0 && errno == ENOTTY) {
        return ejected(-1, ENOTTY);
    }
    // The device manager locks the door of every drive that it has looked at. When this fails,
    // ejecting fails too and says why.
    ioctl(device.get(), CDROM_LOCKDOOR, 0);
    const int result = ioctl(device.get(), CDROMEJECT, 0);
    return ejected(result, errno);
}

Result<void> KernelDevice::ejected(int result, int error) {
    if (result == 0) {
        return {};
    }
    Failure failure = Failure::ofErrno(error);
    // The kernel hands a drive's refusal on as a positive number, not as -1.
    if (result > 0) {
        failure.kind = Failure::Kind::Refused;
    } else if (error == ENOTTY || error == ENOSYS) {
        failure.kind = Failure::Kind::NoDrive;
    }
    return failure;
}
