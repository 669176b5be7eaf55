#include "DiscLayout.h"

#include <gmock/gmock.h>

namespace {

using Kind = DiscLayout::Kind;
using Tracks = std::vector<DiscTrack>;

TEST(DiscLayoutTest, ADiscWithoutATableIsAWholeDataDisc) {
    EXPECT_EQ(discLayout(Tracks{}, 1000), DiscLayout{});
}

TEST(DiscLayoutTest, DataTracksOnlyAreAWholeDataDisc) {
    EXPECT_EQ(discLayout(Tracks{{0, true}}, 1000).kind, Kind::Data);
    EXPECT_EQ(discLayout(Tracks{{0, true}, {500, true}}, 1000).kind, Kind::Data);
}

TEST(DiscLayoutTest, SoundOnlyRunsFromTheFirstTrackToTheLeadOut) {
    const auto layout = discLayout(Tracks{{32, false}, {5000, false}}, 9000);
    EXPECT_EQ(layout, (DiscLayout{Kind::Audio, 32, 8968, 0}));
}

TEST(DiscLayoutTest, DataBeforeSoundEndsWhereTheSoundBegins) {
    const auto layout = discLayout(Tracks{{0, true}, {5000, false}, {7000, false}}, 9000);
    EXPECT_EQ(layout, (DiscLayout{Kind::Mixed, 0, 5000, 150}));
}

TEST(DiscLayoutTest, DataAfterSoundRunsToTheLeadOut) {
    const auto layout = discLayout(Tracks{{0, false}, {5000, false}, {7000, true}}, 9000);
    EXPECT_EQ(layout, (DiscLayout{Kind::Mixed, 7000, 2000, 0}));
}

TEST(DiscLayoutTest, ATableThatMakesNoSenseIsThatOfADataDisc) {
    EXPECT_EQ(discLayout(Tracks{{0, false}}, 0), DiscLayout{});
    EXPECT_EQ(discLayout(Tracks{{500, false}, {400, false}}, 9000), DiscLayout{});
    EXPECT_EQ(discLayout(Tracks{{500, false}, {500, true}}, 9000), DiscLayout{});
}

}  // namespace
