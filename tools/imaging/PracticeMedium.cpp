#include "PracticeMedium.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <thread>

#include "SmallFile.h"

namespace {

using Clock = std::chrono::steady_clock;

// What a drive with read-ahead has ready when it is asked after a pause, in bytes.
constexpr std::size_t readAheadBytes = 1024UL * 1024;

Clock::duration duration(double seconds) {
    // A day stands for ever and keeps the clock's arithmetic from overflowing.
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(std::min(seconds, 86400.0)));
}

// Counts the imaging runs of the disc that this text identifies; 0 when the file cannot be kept.
std::uint64_t countRun(const std::string& path, const std::string& disc) {
    const DescriptorHolder file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (!file.isOpen() || flock(file.get(), LOCK_EX) != 0) {
        return 0;
    }
    const std::string known = SmallFile::read(path).value_or("");
    std::uint64_t runs = 1;
    if (known.starts_with(disc + " ")) {
        runs += std::strtoull(known.c_str() + disc.size() + 1, nullptr, 10);
    }
    const bool kept =
        ftruncate(file.get(), 0) == 0 &&
        SmallFile::writeAll(file.get(), disc + " " + std::to_string(runs) + "\n") == 0;
    return kept ? runs : 0;
}

}  // namespace

Result<std::unique_ptr<Medium>> PracticeMedium::open(const PracticeDrive& drive) {
    if (drive.denyAccess) {
        return Failure::ofErrno(EACCES, PracticeDrive::deviceNode);
    }
    auto image = UncachedFile::open(drive.disc->path);
    if (!image) {
        return Failure::ofErrno(errno, PracticeDrive::deviceNode);
    }
    std::unique_ptr<PracticeMedium> medium(new PracticeMedium(drive, std::move(image)));
    if (const auto begun = medium->beginRun(); !begun) {
        return begun.failure();
    }
    return Result<std::unique_ptr<Medium>>(std::move(medium));
}

PracticeMedium::PracticeMedium(const PracticeDrive& drive, std::unique_ptr<UncachedFile> image)
    : m_drive(drive), m_image(std::move(image)), m_nextRead(Clock::now()) {
    for (const auto& fault : m_drive.faults) {
        m_failuresLeft.push_back(fault.kind == PracticeFault::Kind::Flaky ? fault.times : 0);
    }
}

Result<void> PracticeMedium::beginRun() {
    struct stat status {};
    if (fstat(m_image->descriptor(), &status) != 0) {
        return Failure::ofErrno(errno, m_drive.disc->path);
    }
    m_device = status.st_dev;
    m_inode = status.st_ino;
    m_drive.disc->bytes = static_cast<std::uint64_t>(status.st_size);
    if (const char* path = std::getenv(readLogVariable); path != nullptr && *path != '\0') {
        m_log.emplace(::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
        if (!m_log->isOpen()) {
            return Failure::ofErrno(errno, path);
        }
    }
    if (std::any_of(m_drive.faults.begin(), m_drive.faults.end(), [](const PracticeFault& fault) {
            return fault.kind == PracticeFault::Kind::Changed;
        })) {
        const std::string path = m_drive.folder + "/.runs";
        const std::string disc = std::to_string(m_device) + " " + std::to_string(m_inode) + " " +
                                 std::to_string(status.st_mtim.tv_sec) + " " +
                                 std::to_string(status.st_mtim.tv_nsec);
        const std::uint64_t run = countRun(path, disc);
        if (run == 0) {
            return Failure::ofErrno(errno, path);
        }
        m_changedRun = run % 2 == 0;
    }
    return {};
}

Medium::State PracticeMedium::state() {
    struct stat status {};
    if (stat(m_drive.disc->path.c_str(), &status) != 0) {
        return State::Removed;
    }
    return status.st_dev == m_device && status.st_ino == m_inode ? State::Same : State::Changed;
}

void PracticeMedium::keepPace(std::size_t bytes) {
    if (m_drive.bytesPerSecond == 0) {
        return;
    }
    const auto rate = static_cast<double>(m_drive.bytesPerSecond);
    const auto earliest = Clock::now() - duration(static_cast<double>(readAheadBytes) / rate);
    m_nextRead = std::max(m_nextRead, earliest) + duration(static_cast<double>(bytes) / rate);
    std::this_thread::sleep_until(m_nextRead);
}

// What the faults of these sectors do to one read; the number of the error, or 0.
int PracticeMedium::misbehave(std::uint64_t sector, std::uint64_t count) {
    int error = 0;
    for (std::size_t i = 0; i < m_drive.faults.size(); ++i) {
        const auto& fault = m_drive.faults[i];
        if (sector >= fault.lba + fault.count || sector + count <= fault.lba) {
            continue;
        }
        if (fault.kind == PracticeFault::Kind::Hang) {
            std::this_thread::sleep_for(duration(fault.seconds));
        } else if (fault.kind == PracticeFault::Kind::Unreadable) {
            error = EIO;
        } else if (fault.kind == PracticeFault::Kind::Flaky && m_failuresLeft[i] > 0) {
            --m_failuresLeft[i];
            error = EIO;
        }
    }
    return error;
}

void PracticeMedium::changeBytes(std::uint64_t offset, std::span<std::byte> buffer) const {
    const std::uint64_t bytes = sectorBytes();
    for (const auto& fault : m_drive.faults) {
        if (fault.kind != PracticeFault::Kind::Changed) {
            continue;
        }
        for (std::size_t i = 0; i < buffer.size(); ++i) {
            const std::uint64_t sector = (offset + i) / bytes;
            if (sector >= fault.lba && sector < fault.lba + fault.count) {
                buffer[i] = ~buffer[i];
            }
        }
    }
}

void PracticeMedium::log(std::uint64_t sector, std::uint64_t count, bool failed) const {
    if (m_log) {
        // A log that cannot be kept proves nothing; whoever counts its lines sees that.
        SmallFile::writeAll(m_log->get(), std::to_string(sector) + " " + std::to_string(count) +
                                              (failed ? " failed\n" : "\n"));
    }
}

int PracticeMedium::read(std::uint64_t offset, std::span<std::byte> buffer) {
    const std::uint64_t bytes = sectorBytes();
    const std::uint64_t sector = offset / bytes;
    const std::uint64_t count = (offset + buffer.size() + bytes - 1) / bytes - sector;
    keepPace(buffer.size());
    int error = misbehave(sector, count);
    std::size_t got = 0;
    if (error == 0) {
        error = m_image->read(offset, buffer, &got);
    }
    if (error == 0 && got < buffer.size()) {
        error = EIO;
    }
    log(sector, count, error != 0);
    if (error == 0 && m_changedRun) {
        changeBytes(offset, buffer);
    }
    return error;
}
