#include <vector>

#include "DiscLayout.h"
#include "DiscType.h"
#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "Mmc.h"
#include "OpticalCommands.h"

namespace {

void ensureSane(const DiscLayout& layout, const std::vector<DiscTrack>& tracks,
                std::uint32_t leadOut) {
    if (layout.kind == DiscLayout::Kind::Data) {
        ensure(layout == DiscLayout{}, "the whole disc has no limits");
        return;
    }
    ensure(!tracks.empty(), "a layout is of tracks");
    ensure(layout.sectors > 0, "something is imaged");
    ensure(layout.firstSector >= tracks.front().start, "an image begins at a track");
    ensure(std::uint64_t{layout.firstSector} + layout.sectors <= leadOut,
           "an image ends at the lead-out");
    for (const DiscTrack& track : tracks) {
        const bool isImaged =
            track.start >= layout.firstSector && track.start - layout.firstSector < layout.sectors;
        const bool isWanted = track.data == (layout.kind == DiscLayout::Kind::Mixed);
        ensure(!isImaged || isWanted, "an image holds one kind of track");
    }
}

}  // namespace

// The lead-out in four bytes, the number of tracks in one, five bytes for each of them, then the
// answer to a command.
FUZZ_TARGET(DiscAnswers) {
    FuzzInput input(bytes);
    const auto leadOut = static_cast<std::uint32_t>(input.binary(4));
    std::vector<DiscTrack> tracks(input.binary(1) % 100);
    for (DiscTrack& track : tracks) {
        track.start = static_cast<std::uint32_t>(input.binary(4));
        track.data = input.binary(1) % 2 == 1;
    }
    ensureSane(discLayout(tracks, leadOut), tracks, leadOut);

    const auto answer = std::as_bytes(std::span(input.rest()));
    const auto profile = OpticalCommands::profileIn(answer);
    ensure(profile.has_value() == (answer.size() >= Mmc::featureHeaderBytes),
           "an answer with a whole header has a profile");
    ensure(!DiscType::ofProfile(profile.value_or(Mmc::Profile::none)).empty(),
           "every profile has a name");
    ensure(!OpticalCommands::isBlankIn(answer) || answer.size() > Mmc::discStatusOffset,
           "a cut answer tells nothing");
}
