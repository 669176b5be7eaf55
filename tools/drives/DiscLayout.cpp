#include "DiscLayout.h"

#include <algorithm>

#include "Mmc.h"

DiscLayout discLayout(std::span<const DiscTrack> tracks, std::uint32_t leadOut) {
    const auto starts = [](const DiscTrack& a, const DiscTrack& b) { return a.start >= b.start; };
    if (tracks.empty() || leadOut <= tracks.back().start ||
        std::adjacent_find(tracks.begin(), tracks.end(), starts) != tracks.end()) {
        return {};
    }
    const auto isData = [](const DiscTrack& track) { return track.data; };
    const auto first = std::find_if(tracks.begin(), tracks.end(), isData);
    if (first == tracks.end()) {
        return {DiscLayout::Kind::Audio, tracks.front().start, leadOut - tracks.front().start, 0};
    }
    const auto after = std::find_if_not(first, tracks.end(), isData);
    if (first == tracks.begin() && after == tracks.end()) {
        return {};
    }
    const std::uint32_t end = after == tracks.end() ? leadOut : after->start;
    return {DiscLayout::Kind::Mixed, first->start, end - first->start,
            after == tracks.end() ? 0 : Mmc::pregapSectors};
}
