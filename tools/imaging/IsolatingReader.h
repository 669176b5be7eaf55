// Reads a medium in large pieces, and where that fails finds the sectors that cannot be read with
// few failing commands, because each of them can take a drive many seconds.
//
// A failing large read is followed by single sectors up to the bad one, which is tried once more;
// after it, pieces of 64 KiB, then large ones again. One bad sector so costs three failing
// commands, and one that fails twice and is good then costs nothing else.
//
// Lives on the thread that reads. Keeps a pointer to the medium, which must outlive it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "Medium.h"

class IsolatingReader final {
public:
    struct ReadFailure {
        enum class Kind { Unreadable, Changed, Unsure, Removed };
        Kind kind = Kind::Unreadable;
        std::uint64_t sector = 0;  // counted from the start of what is imaged; for Unreadable
        int error = 0;             // the error number; for Unreadable
    };
    struct ReadResult {
        std::size_t bytes = 0;               // good bytes at the buffer's start
        std::optional<ReadFailure> failure;  // why there are not more; absent when all are good
    };

    explicit IsolatingReader(Medium& medium) : m_medium(&medium) {}

    // Fills the buffer from the byte offset, which is a sector's start.
    ReadResult read(std::uint64_t offset, std::span<std::byte> buffer);

    // Whether this sector can be read now, in a single command.
    bool isReadable(std::uint64_t sector);

private:
    std::optional<ReadFailure> readSectors(std::uint64_t offset, std::span<std::byte> buffer,
                                           std::size_t& good);
    std::optional<ReadFailure> readOneSector(std::uint64_t offset, std::span<std::byte> buffer);
    std::optional<ReadFailure> discIsGone(int error);

    Medium* m_medium;
    bool m_pastTheBadSector = false;  // in the buffer that is being isolated
};
