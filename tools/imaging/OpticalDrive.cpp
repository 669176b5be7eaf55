#include "OpticalDrive.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <thread>
#include <vector>

#include "ScsiCommand.h"

#ifndef BLKGETDISKSEQ
#define BLKGETDISKSEQ _IOR(0x12, 128, __u64)
#endif

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto spinUpLimit = std::chrono::seconds(60);
constexpr auto askEvery = std::chrono::seconds(2);

int driveStatus(int descriptor) {
    return ioctl(descriptor, CDROM_DRIVE_STATUS, CDSL_CURRENT);
}

int openQuietly(const std::string& device) {
    return open(device.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

std::optional<DiscTrack> track(int descriptor, int number) {
    cdrom_tocentry entry{};
    entry.cdte_track = static_cast<__u8>(number);
    entry.cdte_format = CDROM_LBA;
    if (ioctl(descriptor, CDROMREADTOCENTRY, &entry) != 0 || entry.cdte_addr.lba < 0) {
        return std::nullopt;
    }
    return DiscTrack{static_cast<std::uint32_t>(entry.cdte_addr.lba),
                     (entry.cdte_ctrl & CDROM_DATA_TRACK) != 0};
}

}  // namespace

std::optional<std::uint64_t> diskSequence(int descriptor) {
    __u64 number = 0;
    if (ioctl(descriptor, BLKGETDISKSEQ, &number) != 0) {
        return std::nullopt;
    }
    return number;
}

std::unique_ptr<OpticalDrive> OpticalDrive::open(const std::string& device, std::string* problem) {
    problem->clear();
    const int descriptor = openQuietly(device);
    if (descriptor < 0) {
        *problem = device + ": " + std::strerror(errno);
        return nullptr;
    }
    std::unique_ptr<OpticalDrive> drive(new OpticalDrive(device, descriptor));
    if (ioctl(descriptor, CDROM_GET_CAPABILITY, 0) < 0) {
        return nullptr;
    }
    const auto giveUp = Clock::now() + spinUpLimit;
    int status = driveStatus(descriptor);
    while (status == CDS_DRIVE_NOT_READY && Clock::now() < giveUp) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        status = driveStatus(descriptor);
    }
    if (status == CDS_TRAY_OPEN) {
        *problem = "the tray of " + device + " is open";
    } else if (status == CDS_NO_DISC) {
        *problem = "there is no disc in " + device;
    } else if (status == CDS_DRIVE_NOT_READY) {
        *problem = device + " does not become ready";
    } else if (status < 0) {
        *problem = device + ": " + std::strerror(errno);
    }
    if (!problem->empty()) {
        return nullptr;
    }
    // The kernel counts a fresh disc once more when its spinning up comes to an end and somebody
    // opens the drive; that must not look like a swap later.
    if (const int again = openQuietly(device); again >= 0) {
        close(again);
    }
    drive->m_disc = diskSequence(descriptor);
    return drive;
}

OpticalDrive::OpticalDrive(std::string device, int descriptor)
    : m_device(std::move(device)), m_descriptor(descriptor), m_asked(Clock::now()) {}

OpticalDrive::~OpticalDrive() {
    close(m_descriptor);
}

DiscLayout OpticalDrive::layout() const {
    cdrom_tochdr header{};
    if (ioctl(m_descriptor, CDROMREADTOCHDR, &header) != 0) {
        return {};
    }
    std::vector<DiscTrack> tracks;
    for (int number = header.cdth_trk0; number <= header.cdth_trk1; ++number) {
        const auto entry = track(m_descriptor, number);
        if (!entry) {
            return {};
        }
        tracks.push_back(*entry);
    }
    const auto leadOut = track(m_descriptor, CDROM_LEADOUT);
    return leadOut ? discLayout(tracks, leadOut->start) : DiscLayout{};
}

bool OpticalDrive::discIsBlank() const {
    constexpr std::byte readDiscInformation{0x51};
    std::array<std::byte, 34> answer{};
    std::array<std::byte, 10> command{};
    command[0] = readDiscInformation;
    command[8] = std::byte{answer.size()};
    return ScsiCommand::run(m_descriptor, command, answer) == 0 &&
           (answer[2] & std::byte{3}) == std::byte{0};
}

Medium::State OpticalDrive::state() {
    if (diskSequence(m_descriptor) != m_disc) {
        return Medium::State::Changed;
    }
    // The kernel notices a swap only when it asks the drive, which nothing may make it do.
    const auto now = Clock::now();
    if (now - m_asked < askEvery) {
        return Medium::State::Same;
    }
    m_asked = now;
    return confirmedState();
}

Medium::State OpticalDrive::confirmedState() {
    // Opening makes the kernel ask the drive whether its disc was changed.
    const int again = openQuietly(m_device);
    if (again < 0) {
        return Medium::State::Removed;
    }
    const int status = driveStatus(again);
    close(again);
    if (status == CDS_NO_DISC || status == CDS_TRAY_OPEN) {
        return Medium::State::Removed;
    }
    return diskSequence(m_descriptor) == m_disc ? Medium::State::Same : Medium::State::Changed;
}
