// Reads the frames of an audio disc in as many commands as it takes.
//
// Used by one reader thread. READ CD sent to the drive comes first, as it is quickest; where the
// kernel refuses to hand it on, its own call for sound takes over.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

class AudioFrames final {
public:
    // What every host adapter transfers in one command: just below 64 KiB.
    static constexpr std::size_t framesPerCommand = 27;

    // Fills the buffer with frames from this one on: 0, or the number of the error.
    using Read = std::function<int(std::uint32_t first, std::span<std::byte> buffer)>;

    AudioFrames(Read readCd, Read readAudio)
        : m_readCd(std::move(readCd)), m_readAudio(std::move(readAudio)) {}
    // Both ways of reading from this drive, which must stay open.
    static AudioFrames ofDrive(int descriptor);

    // Fills the buffer, whole frames, from this one on: 0, or the number of the error.
    int read(std::uint32_t first, std::span<std::byte> buffer);

    // The READ CD command for the samples of these frames and nothing around them.
    static std::array<std::byte, 12> readCdCommand(std::uint32_t first, std::uint32_t frames);

private:
    int readOnce(std::uint32_t first, std::span<std::byte> buffer);

    Read m_readCd;
    Read m_readAudio;
    bool m_readCdWorks = true;
};
