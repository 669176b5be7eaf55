#include "AudioMedium.h"

int AudioMedium::read(std::uint64_t offset, std::span<std::byte> buffer) {
    return m_frames.read(
        static_cast<std::uint32_t>(m_layout.firstSector + offset / Mmc::audioSectorBytes), buffer);
}
