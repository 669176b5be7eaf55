// What tells a disc from others after its drive or the bus was reset, which the kernel reports as
// it reports a change of discs: the size, and what the file systems say of themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct DiscMarks {
    std::uint64_t bytes = 0;
    std::vector<std::byte> descriptors;

    // Those of the disc in a device or of an image file, read past the page cache. firstSector:
    // where its data begins. Absent when it cannot be read, or has no file system to go by.
    static std::optional<DiscMarks> of(const std::string& device, std::uint64_t firstSector);

    bool operator==(const DiscMarks&) const = default;
};
