#include "AudioFrames.h"

#include <linux/cdrom.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "Mmc.h"
#include "ScsiCommand.h"

namespace {

std::byte byteOf(std::uint32_t value, unsigned shift) {
    return static_cast<std::byte>(value >> shift & 0xff);
}

int readCd(int descriptor, std::uint32_t first, std::span<std::byte> buffer) {
    const auto frames = static_cast<std::uint32_t>(buffer.size() / Mmc::audioSectorBytes);
    const auto result = ScsiCommand::run(descriptor, AudioFrames::readCdCommand(first, frames),
                                         buffer, std::chrono::minutes(1));
    return result.error == 0 && result.bytes < buffer.size() ? EIO : result.error;
}

int readAudio(int descriptor, std::uint32_t first, std::span<std::byte> buffer) {
    cdrom_read_audio request{};
    request.addr.lba = static_cast<int>(first);
    request.addr_format = CDROM_LBA;
    request.nframes = static_cast<int>(buffer.size() / Mmc::audioSectorBytes);
    request.buf = reinterpret_cast<__u8*>(buffer.data());
    return ioctl(descriptor, CDROMREADAUDIO, &request) == 0 ? 0 : errno;
}

}  // namespace

AudioFrames AudioFrames::ofDrive(int descriptor) {
    return {[descriptor](std::uint32_t first, std::span<std::byte> buffer) {
                return readCd(descriptor, first, buffer);
            },
            [descriptor](std::uint32_t first, std::span<std::byte> buffer) {
                return readAudio(descriptor, first, buffer);
            }};
}

std::array<std::byte, 12> AudioFrames::readCdCommand(std::uint32_t first, std::uint32_t frames) {
    return {Mmc::OperationCode::readCd, Mmc::expectCdDa,  byteOf(first, 24),  byteOf(first, 16),
            byteOf(first, 8),           byteOf(first, 0), byteOf(frames, 16), byteOf(frames, 8),
            byteOf(frames, 0),          Mmc::userData};
}

int AudioFrames::readOnce(std::uint32_t first, std::span<std::byte> buffer) {
    if (m_readCdWorks) {
        const int error = m_readCd(first, buffer);
        // Refused by the kernel, not by the disc.
        if (error != ENOTTY && error != EINVAL && error != EPERM) {
            return error;
        }
        m_readCdWorks = false;
    }
    return m_readAudio(first, buffer);
}

int AudioFrames::read(std::uint32_t first, std::span<std::byte> buffer) {
    while (!buffer.empty()) {
        const std::size_t bytes = std::min(buffer.size(), framesPerCommand * Mmc::audioSectorBytes);
        if (const int error = readOnce(first, buffer.first(bytes))) {
            return error;
        }
        buffer = buffer.subspan(bytes);
        first += static_cast<std::uint32_t>(bytes / Mmc::audioSectorBytes);
    }
    return 0;
}
