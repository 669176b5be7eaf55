#include "AudioMedium.h"

#include <linux/cdrom.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "ScsiCommand.h"

namespace {

// What every host adapter transfers in one command: just below 64 KiB.
constexpr std::size_t framesPerCommand = 27;

std::byte byteOf(std::uint32_t value, unsigned shift) {
    return static_cast<std::byte>(value >> shift & 0xff);
}

int readCd(int descriptor, std::uint32_t first, std::span<std::byte> buffer) {
    const auto frames = static_cast<std::uint32_t>(buffer.size() / AudioMedium::frameBytes);
    const std::array<std::byte, 12> command = {
        std::byte{0xbe},   std::byte{0x04},  // READ CD, of sound
        byteOf(first, 24), byteOf(first, 16),  byteOf(first, 8),
        byteOf(first, 0),  byteOf(frames, 16), byteOf(frames, 8),
        byteOf(frames, 0), std::byte{0x10},  // the samples, nothing around them
    };
    return ScsiCommand::run(descriptor, command, buffer, ScsiCommand::Answer::Exact);
}

int readAudio(int descriptor, std::uint32_t first, std::span<std::byte> buffer) {
    cdrom_read_audio request{};
    request.addr.lba = static_cast<int>(first);
    request.addr_format = CDROM_LBA;
    request.nframes = static_cast<int>(buffer.size() / AudioMedium::frameBytes);
    request.buf = reinterpret_cast<__u8*>(buffer.data());
    return ioctl(descriptor, CDROMREADAUDIO, &request) == 0 ? 0 : errno;
}

}  // namespace

int AudioMedium::readFrames(std::uint32_t first, std::span<std::byte> buffer) {
    if (m_readCdWorks) {
        const int error = readCd(m_drive->descriptor(), first, buffer);
        // Refused by the kernel, not by the disc.
        if (error != ENOTTY && error != EINVAL && error != EPERM) {
            return error;
        }
        m_readCdWorks = false;
    }
    return readAudio(m_drive->descriptor(), first, buffer);
}

int AudioMedium::read(std::uint64_t offset, std::span<std::byte> buffer) {
    auto frame = static_cast<std::uint32_t>(m_layout.firstSector + offset / frameBytes);
    while (!buffer.empty()) {
        const std::size_t bytes = std::min(buffer.size(), framesPerCommand * frameBytes);
        if (const int error = readFrames(frame, buffer.first(bytes))) {
            return error;
        }
        buffer = buffer.subspan(bytes);
        frame += static_cast<std::uint32_t>(bytes / frameBytes);
    }
    return 0;
}
