// The sound of an audio disc: frames of 2352 bytes, as the drive reads them.
#pragma once

#include <memory>

#include "AudioFrames.h"
#include "Medium.h"
#include "Mmc.h"
#include "OpticalDrive.h"

class AudioMedium final : public Medium {
public:
    // layout: one of the kind Audio.
    AudioMedium(std::unique_ptr<OpticalDrive> drive, const DiscLayout& layout)
        : m_drive(std::move(drive)),
          m_layout(layout),
          m_frames(AudioFrames::ofDrive(m_drive->descriptor())) {}

    std::uint32_t sectorBytes() const override { return Mmc::audioSectorBytes; }
    std::uint64_t capacity() const override {
        return std::uint64_t{m_layout.sectors} * Mmc::audioSectorBytes;
    }
    std::uint64_t firstSector() const override { return m_layout.firstSector; }
    std::uint32_t runOutSectors() const override { return 0; }
    int read(std::uint64_t offset, std::span<std::byte> buffer) override;
    State state() override { return m_drive->state(); }
    State confirmedState() override { return m_drive->confirmedState(); }

private:
    std::unique_ptr<OpticalDrive> m_drive;
    DiscLayout m_layout;
    AudioFrames m_frames;
};
