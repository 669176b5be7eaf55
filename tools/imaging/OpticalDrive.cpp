#include "OpticalDrive.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <climits>  // CDSL_CURRENT is made of it
#include <thread>

#include "OpticalCommands.h"

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

// Its status once a disc has spun up, or after a minute.
int settledStatus(int descriptor) {
    const auto giveUp = Clock::now() + spinUpLimit;
    int status = driveStatus(descriptor);
    while (status == CDS_DRIVE_NOT_READY && Clock::now() < giveUp) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        status = driveStatus(descriptor);
    }
    return status;
}

DescriptorHolder openQuietly(const std::string& device) {
    return DescriptorHolder(open(device.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

}  // namespace

std::optional<std::uint64_t> diskSequence(int descriptor) {
    __u64 number = 0;
    if (ioctl(descriptor, BLKGETDISKSEQ, &number) != 0) {
        return std::nullopt;
    }
    return number;
}

Result<std::unique_ptr<OpticalDrive>> OpticalDrive::open(const std::string& device) {
    std::unique_ptr<OpticalDrive> drive(new OpticalDrive(device, openQuietly(device)));
    if (!drive->m_descriptor.isOpen()) {
        return Failure::ofErrno(errno, device);
    }
    const int descriptor = drive->descriptor();
    if (ioctl(descriptor, CDROM_GET_CAPABILITY, 0) < 0) {
        return Failure{Failure::Kind::NoDrive, device + " is not an optical drive"};
    }
    const int status = settledStatus(descriptor);
    if (status < 0) {
        return Failure::ofErrno(errno, device);
    }
    if (status == CDS_TRAY_OPEN) {
        return Failure{Failure::Kind::Medium, "the tray of " + device + " is open"};
    }
    if (status == CDS_NO_DISC) {
        return Failure{Failure::Kind::Medium, "there is no disc in " + device};
    }
    if (status == CDS_DRIVE_NOT_READY) {
        return Failure{Failure::Kind::Medium, device + " does not become ready"};
    }
    // The kernel counts a fresh disc once more when its spinning up comes to an end and somebody
    // opens the drive; that must not look like a swap later.
    openQuietly(device);
    drive->m_disc = diskSequence(descriptor);
    return drive;
}

OpticalDrive::OpticalDrive(std::string device, DescriptorHolder descriptor)
    : m_device(std::move(device)), m_descriptor(std::move(descriptor)), m_asked(Clock::now()) {}

DiscLayout OpticalDrive::layout() const {
    return OpticalCommands::layout(descriptor());
}

bool OpticalDrive::discIsBlank() const {
    return OpticalCommands::discIsBlank(descriptor());
}

void OpticalDrive::rememberDisc(std::optional<DiscMarks> marks, std::uint64_t firstSector) {
    m_firstSector = firstSector;
    m_marks = std::move(marks);
}

Medium::State OpticalDrive::state() {
    // The number also changes when a disc is taken out.
    if (diskSequence(descriptor()) != m_disc) {
        return confirmedState();
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
    const DescriptorHolder again = openQuietly(m_device);
    if (!again.isOpen()) {
        return Medium::State::Removed;
    }
    const int status = settledStatus(again.get());
    if (status == CDS_NO_DISC || status == CDS_TRAY_OPEN) {
        return Medium::State::Removed;
    }
    const auto disc = diskSequence(descriptor());
    if (disc == m_disc) {
        return Medium::State::Same;
    }
    if (!m_marks) {
        return Medium::State::Unsure;
    }
    if (DiscMarks::of(m_device, m_firstSector) != m_marks) {
        return Medium::State::Changed;
    }
    // A change that comes while the marks are read counts once more.
    m_disc = disc;
    return Medium::State::Same;
}
