// What tells a disc from others after its drive or the bus was reset, which the kernel reports as
// it reports a change of discs: the size, and what the file systems say of themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Mmc.h"

struct DiscMarks {
    // How much of the data's beginning they are in, as far as there is as much.
    static constexpr std::size_t beginningBytes = 257 * Mmc::dataSectorBytes;

    std::uint64_t bytes = 0;
    std::vector<std::byte> descriptors;

    // deviceBytes: the size of the device. Absent when there is no file system to go by.
    static std::optional<DiscMarks> in(std::span<const std::byte> beginning,
                                       std::uint64_t deviceBytes);
    // Those of the disc in a device or of an image file now, read past the page cache. firstSector:
    // where its data begins. Absent also when it cannot be read.
    static std::optional<DiscMarks> of(const std::string& device, std::uint64_t firstSector);

    bool operator==(const DiscMarks&) const = default;
};
