// Something that can be imaged: a disc in a drive, a block device, or the practice drive's image.
//
// Used by one reader thread; only state() may be called from it between reads. A medium never
// invents bytes: a read gives all that was asked for or an error number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "DescriptorHolder.h"
#include "Mmc.h"

class Medium {
public:
    enum class State {
        Same,     // still the disc that was opened
        Changed,  // another disc is in the drive
        Unsure,   // the drive was reset, and nothing tells whether it still has the disc
        Removed,  // no disc is in the drive, or the drive is gone
    };

    Medium() = default;
    virtual ~Medium() = default;
    Medium(const Medium&) = delete;
    Medium& operator=(const Medium&) = delete;

    // The unit in which faults are isolated and sectors are numbered, in bytes.
    virtual std::uint32_t sectorBytes() const = 0;
    // How much there is to image, in bytes; the last sector may be a short one.
    virtual std::uint64_t capacity() const = 0;
    // Number of the first sector, as the drive counts; not 0 when only one track is imaged.
    virtual std::uint64_t firstSector() const { return 0; }
    // How many sectors at the end may be counted by the capacity though no drive reads them.
    virtual std::uint32_t runOutSectors() const { return Mmc::runOutSectors; }
    // What people should know about what is imaged and what is not, one sentence; empty: nothing.
    virtual std::string remark() const { return {}; }

    // Fills the whole buffer from the given byte offset: 0, or the number of the error. The offset
    // is a multiple of sectorBytes(), and the buffer ends at a sector's end or at the capacity's.
    virtual int read(std::uint64_t offset, std::span<std::byte> buffer) = 0;

    // Keeps the lock on the device for as long as the medium lives.
    void keepLock(DescriptorHolder lock) { m_lock.emplace(std::move(lock)); }

    // Cheap: asked before every read.
    virtual State state() { return State::Same; }
    // Thorough: asked once at the end, and after a failed read; may ask the drive.
    virtual State confirmedState() { return state(); }

private:
    std::optional<DescriptorHolder> m_lock;
};
