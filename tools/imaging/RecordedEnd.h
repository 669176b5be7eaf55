// Where the recorded data of a disc of 2048-byte sectors ends, by what its file systems say of
// themselves: ISO 9660, UDF and a partition table around them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

// Fills the buffer, one sector, with this sector; false when it cannot.
using ReadSector = std::function<bool(std::uint64_t sector, std::span<std::byte> buffer)>;

// The number of sectors that the file systems use, counted from the disc's start; the largest
// when there are several. Absent when there is no ISO 9660 or UDF file system.
// capacity: the sectors of the disc.
std::optional<std::uint64_t> recordedEnd(const ReadSector& read, std::uint64_t capacity);
