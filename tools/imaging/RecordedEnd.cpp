#include "RecordedEnd.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "Mmc.h"

namespace {

using Mmc::dataSectorBytes;
using Sector = std::array<std::byte, dataSectorBytes>;

std::uint64_t little(const Sector& sector, std::size_t at, std::size_t bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = bytes; i-- > 0;) {
        value = value << 8 | std::to_integer<std::uint64_t>(sector.at(at + i));
    }
    return value;
}

bool holds(const Sector& sector, std::size_t at, const char* text) {
    return std::memcmp(sector.data() + at, text, std::strlen(text)) == 0;
}

// 512-byte blocks to the sectors that they touch.
std::uint64_t sectorsOfBlocks(std::uint64_t blocks) {
    return blocks / 4 + (blocks % 4 != 0);
}

std::optional<std::uint64_t> isoEnd(const ReadSector& read) {
    constexpr std::uint64_t firstDescriptor = 16;
    constexpr std::uint64_t descriptorLimit = 32;
    Sector sector{};
    for (std::uint64_t at = firstDescriptor; at < descriptorLimit; ++at) {
        if (!read(at, sector) || !holds(sector, 1, "CD001")) {
            return std::nullopt;
        }
        const auto type = std::to_integer<int>(sector[0]);
        if (type == 1) {
            const std::uint64_t blocks = little(sector, 80, 4);
            const std::uint64_t blockBytes = little(sector, 128, 2);
            const bool known = blockBytes == 512 || blockBytes == 1024 || blockBytes == 2048;
            if (!known || blocks == 0) {
                return std::nullopt;
            }
            return (blocks * blockBytes + dataSectorBytes - 1) / dataSectorBytes;
        }
        if (type == 255) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

// A UDF descriptor of this kind, with the checksum of its tag right.
bool isDescriptor(const Sector& sector, std::uint64_t identifier) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        sum += i == 4 ? 0 : std::to_integer<std::uint64_t>(sector.at(i));
    }
    return little(sector, 0, 2) == identifier && (sum & 0xff) == little(sector, 4, 1);
}

struct Extent {
    std::uint64_t start = 0;
    std::uint64_t sectors = 0;
    std::uint64_t end() const { return start + sectors; }
};

Extent extentAt(const Sector& sector, std::size_t at) {
    return {little(sector, at + 4, 4),
            (little(sector, at, 4) + dataSectorBytes - 1) / dataSectorBytes};
}

// The end of the partitions of one volume descriptor sequence.
std::optional<std::uint64_t> partitionsEnd(const ReadSector& read, const Extent& sequence) {
    constexpr std::uint64_t partitionDescriptor = 5;
    constexpr std::uint64_t terminator = 8;
    constexpr std::uint64_t sequenceLimit = 64;
    std::optional<std::uint64_t> end;
    Sector sector{};
    for (std::uint64_t i = 0; i < std::min(sequence.sectors, sequenceLimit); ++i) {
        if (!read(sequence.start + i, sector) || isDescriptor(sector, terminator)) {
            break;
        }
        if (isDescriptor(sector, partitionDescriptor)) {
            const std::uint64_t partition = little(sector, 188, 4) + little(sector, 192, 4);
            end = std::max(end.value_or(0), partition);
        }
    }
    return end;
}

std::optional<std::uint64_t> udfEnd(const ReadSector& read, std::uint64_t capacity) {
    constexpr std::uint64_t anchorDescriptor = 2;
    constexpr std::uint64_t anchor = 256;
    for (const std::uint64_t back : {std::uint64_t{0}, std::uint64_t{257}, std::uint64_t{1}}) {
        const std::uint64_t at = back == 0 ? anchor : capacity - back;
        Sector sector{};
        if (capacity <= anchor || !read(at, sector) || !isDescriptor(sector, anchorDescriptor)) {
            continue;
        }
        const Extent main = extentAt(sector, 16);
        const Extent reserve = extentAt(sector, 24);
        auto end = partitionsEnd(read, main);
        if (!end) {
            end = partitionsEnd(read, reserve);
        }
        if (end) {
            return std::max({*end, main.end(), reserve.end(), anchor + 1});
        }
    }
    return std::nullopt;
}

// The end of what a partition table in the first sector claims, 0 without one.
std::uint64_t partitionTableEnd(const ReadSector& read) {
    constexpr std::uint64_t protective = 0xee;
    Sector sector{};
    if (!read(0, sector) || little(sector, 510, 2) != 0xaa55) {
        return 0;
    }
    std::uint64_t end = 0;
    for (std::size_t entry = 446; entry < 510; entry += 16) {
        const std::uint64_t type = little(sector, entry + 4, 1);
        if (type != 0 && type != protective) {
            end = std::max(
                end, sectorsOfBlocks(little(sector, entry + 8, 4) + little(sector, entry + 12, 4)));
        }
    }
    // A GPT header, in the second 512-byte block, names the block of its copy: the last one.
    if (holds(sector, 512, "EFI PART")) {
        end = std::max(end, sectorsOfBlocks(little(sector, 512 + 32, 8) + 1));
    }
    return end;
}

}  // namespace

std::optional<std::uint64_t> recordedEnd(const ReadSector& read, std::uint64_t capacity) {
    const auto iso = isoEnd(read);
    const auto udf = udfEnd(read, capacity);
    if (!iso && !udf) {
        return std::nullopt;
    }
    return std::max({iso.value_or(0), udf.value_or(0), partitionTableEnd(read)});
}
