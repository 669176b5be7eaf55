// The practice drive's disc: its image read from its disk, with the faults and the pace that the
// drive's settings ask for.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DescriptorHolder.h"
#include "Medium.h"
#include "Mmc.h"
#include "PracticeDrive.h"
#include "UncachedFile.h"

class PracticeMedium final : public Medium {
public:
    // A file that gets a line for each read: "<first sector> <sectors>", and " failed" after it
    // when the read failed.
    static constexpr const char* readLogVariable = "SPINDRIFT_PRACTICE_READ_LOG";

    // Begins one imaging run of the disc in the drive's tray, which has one.
    static Result<std::unique_ptr<Medium>> open(const PracticeDrive& drive);

    std::uint32_t sectorBytes() const override { return m_drive.disc->sectorBytes(); }
    std::uint64_t capacity() const override { return m_drive.disc->bytes; }
    // Frames of sound have no file system that could say where the disc ends.
    std::uint32_t runOutSectors() const override {
        return m_drive.disc->audio ? 0 : Mmc::runOutSectors;
    }
    int read(std::uint64_t offset, std::span<std::byte> buffer) override;
    State state() override;

private:
    PracticeMedium(const PracticeDrive& drive, std::unique_ptr<UncachedFile> image);
    Result<void> beginRun();
    void keepPace(std::size_t bytes);
    int misbehave(std::uint64_t sector, std::uint64_t count);
    void changeBytes(std::uint64_t offset, std::span<std::byte> buffer) const;
    void log(std::uint64_t sector, std::uint64_t count, bool failed) const;

    PracticeDrive m_drive;
    std::vector<std::uint64_t> m_failuresLeft;  // of each fault that is flaky
    std::unique_ptr<UncachedFile> m_image;
    std::uint64_t m_device = 0;  // what identifies the image
    std::uint64_t m_inode = 0;
    bool m_changedRun = false;  // the sectors marked as changed have other bytes in this run
    std::optional<DescriptorHolder> m_log;
    std::chrono::steady_clock::time_point m_nextRead;
};
