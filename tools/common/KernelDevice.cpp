#include "KernelDevice.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "DescriptorHolder.h"
#include "FileSystemLabel.h"

namespace {

constexpr unsigned answerMilliseconds = 10'000;
constexpr std::uint64_t audioSectorBytes = 2352;

// Sends a command that answers with data; the number of bytes that came, 0 when it failed.
template <std::size_t CommandSize, std::size_t AnswerSize>
std::size_t command(int device, std::array<std::uint8_t, CommandSize> block,
                    std::array<std::uint8_t, AnswerSize>& answer) {
    std::array<std::uint8_t, 32> sense{};
    sg_io_hdr_t request{};
    request.interface_id = 'S';
    request.dxfer_direction = SG_DXFER_FROM_DEV;
    request.cmd_len = static_cast<unsigned char>(block.size());
    request.cmdp = block.data();
    request.dxfer_len = static_cast<unsigned>(answer.size());
    request.dxferp = answer.data();
    request.mx_sb_len = static_cast<unsigned char>(sense.size());
    request.sbp = sense.data();
    request.timeout = answerMilliseconds;
    if (ioctl(device, SG_IO, &request) != 0 || (request.info & SG_INFO_OK_MASK) != SG_INFO_OK ||
        request.resid < 0 || static_cast<std::size_t>(request.resid) > answer.size()) {
        return 0;
    }
    return answer.size() - static_cast<std::size_t>(request.resid);
}

std::optional<std::uint16_t> currentProfile(int device) {
    constexpr std::uint8_t getConfiguration = 0x46;
    constexpr std::uint8_t oneFeature = 0x02;
    std::array<std::uint8_t, 8> answer{};
    const std::array<std::uint8_t, 10> block = {getConfiguration, oneFeature, 0, 0, 0, 0, 0, 0,
                                                answer.size(),    0};
    return KernelDevice::profileIn(answer.data(), command(device, block, answer));
}

bool isBlank(int device) {
    constexpr std::uint8_t readDiscInformation = 0x51;
    std::array<std::uint8_t, 34> answer{};
    const std::array<std::uint8_t, 10> block = {readDiscInformation, 0, 0, 0, 0, 0, 0, 0,
                                                answer.size(),       0};
    return KernelDevice::isBlankIn(answer.data(), command(device, block, answer));
}

// Only these can be blank, and a read-only drive may take offence at being asked.
bool isRecordable(std::uint16_t profile) {
    return profile != 0x08 && profile != 0x10 && profile != 0x40 && profile != 0x50;
}

// Where a track begins, in sectors; absent when the table of contents does not tell.
std::optional<std::uint64_t> trackStart(int device, std::uint8_t track) {
    cdrom_tocentry entry{};
    entry.cdte_track = track;
    entry.cdte_format = CDROM_LBA;
    if (ioctl(device, CDROMREADTOCENTRY, &entry) != 0 || entry.cdte_addr.lba < 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(entry.cdte_addr.lba);
}

// From the first track to the lead-out: what an image of an audio disc holds.
std::uint64_t audioBytes(int device) {
    cdrom_tochdr header{};
    if (ioctl(device, CDROMREADTOCHDR, &header) != 0) {
        return 0;
    }
    const auto first = trackStart(device, header.cdth_trk0);
    const auto end = trackStart(device, CDROM_LEADOUT);
    return first && end && *first < *end ? (*end - *first) * audioSectorBytes : 0;
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

std::optional<std::uint16_t> KernelDevice::profileIn(const std::uint8_t* answer, std::size_t size) {
    if (size < 8) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(answer[6] << 8 | answer[7]);
}

bool KernelDevice::isBlankIn(const std::uint8_t* answer, std::size_t size) {
    return size >= 3 && (answer[2] & 0x03) == 0;
}

std::optional<Medium> KernelDevice::medium(const std::string& node, std::string* error) {
    const DescriptorHolder device = openQuietly(node);
    Medium medium;
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
    medium.profile = currentProfile(device.get());
    medium.present = status == CDS_DISC_OK || medium.profile.value_or(0) != 0;
    if (!medium.present) {
        return medium;
    }
    medium.blank = medium.profile && isRecordable(*medium.profile) && isBlank(device.get());
    if (medium.blank) {
        return medium;
    }
    const bool mayBeAudio =
        medium.profile.value_or(0x08) >= 0x08 && medium.profile.value_or(0x08) <= 0x0A;
    medium.audioOnly =
        mayBeAudio && ioctl(device.get(), CDROM_DISC_STATUS, CDSL_CURRENT) == CDS_AUDIO;
    medium.bytes = medium.audioOnly ? audioBytes(device.get()) : deviceBytes(device.get());
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
