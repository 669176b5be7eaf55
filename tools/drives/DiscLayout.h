// Which sectors of a disc are imaged, by its table of contents.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

struct DiscTrack {
    std::uint32_t start = 0;  // its first sector
    bool data = true;         // false: sound
};

struct DiscLayout {
    enum class Kind {
        Data,   // the whole disc, as its capacity says
        Audio,  // tracks of sound only
        Mixed,  // the data tracks of a disc that has sound as well
    };
    Kind kind = Kind::Data;
    // For Audio and Mixed:
    std::uint32_t firstSector = 0;
    std::uint32_t sectors = 0;
    // Sectors at the end of a Mixed disc's data that belong to the gap before the sound.
    std::uint32_t gapSectors = 0;

    bool operator==(const DiscLayout&) const = default;
};

// tracks: in the disc's order, perhaps none; leadOut: the sector after the last track. A table that
// makes no sense is taken for that of a data disc.
DiscLayout discLayout(std::span<const DiscTrack> tracks, std::uint32_t leadOut);
