#include "IsolatingReader.h"

#include <gmock/gmock.h>

#include "FaultyMedium.h"
#include "ScratchFolder.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Command = FaultyMedium::Command;
using Kind = IsolatingReader::ReadFailure::Kind;

constexpr std::size_t sectorBytes = 2048;
constexpr std::size_t sectors = 512;

class IsolatingReaderTest : public testing::Test {
protected:
    IsolatingReader::ReadResult readAll() {
        buffer.assign(medium.bytes.size(), std::byte{0});
        return IsolatingReader(medium).read(0, buffer);
    }

    std::string read(std::size_t count) const {
        return {reinterpret_cast<const char*>(buffer.data()), count};
    }

    FaultyMedium medium{patternBytes(sectors * sectorBytes)};
    std::vector<std::byte> buffer;
};

TEST_F(IsolatingReaderTest, AGoodMediumIsReadInOneCommand) {
    const auto result = readAll();
    EXPECT_FALSE(result.failure);
    EXPECT_EQ(result.bytes, medium.bytes.size());
    EXPECT_EQ(read(result.bytes), medium.bytes);
    EXPECT_THAT(medium.commands, SizeIs(1));
}

TEST_F(IsolatingReaderTest, EveryBadSectorIsFoundWithThreeFailingCommandsAndNothingBeforeItIsLost) {
    for (std::uint64_t bad = 0; bad < sectors; ++bad) {
        medium.commands.clear();
        medium.failuresLeft = {{bad, FaultyMedium::always}};
        const auto result = readAll();
        ASSERT_TRUE(result.failure) << bad;
        EXPECT_EQ(result.failure->kind, Kind::Unreadable);
        EXPECT_EQ(result.failure->sector, bad);
        EXPECT_EQ(result.failure->error, EIO);
        EXPECT_EQ(result.bytes, bad * sectorBytes);
        EXPECT_EQ(read(result.bytes), medium.bytes.substr(0, result.bytes));
        EXPECT_THAT(medium.failed(), ElementsAre(Command{0, sectors, true}, Command{bad, 1, true},
                                                 Command{bad, 1, true}));
    }
}

TEST_F(IsolatingReaderTest, ASectorThatFailsTwiceAndIsGoodThenIsRead) {
    for (const std::uint64_t bad : {0UL, 1UL, 31UL, 32UL, 300UL, 511UL}) {
        medium.commands.clear();
        medium.failuresLeft = {{bad, 2}};
        const auto result = readAll();
        EXPECT_FALSE(result.failure) << bad;
        EXPECT_EQ(read(result.bytes), medium.bytes) << bad;
        EXPECT_THAT(medium.failed(), SizeIs(2));
    }
}

TEST_F(IsolatingReaderTest, AfterTheBadSectorTheReadsAreLargeAgain) {
    medium.failuresLeft = {{2, 2}};
    ASSERT_FALSE(readAll().failure);
    ASSERT_GT(medium.commands.size(), 5U);
    EXPECT_EQ(medium.commands[4], (Command{2, 1, false}));
    EXPECT_EQ(medium.commands[5], (Command{3, 32, false}));
    EXPECT_LT(medium.commands.size(), 24U);
}

TEST_F(IsolatingReaderTest, SeveralSectorsThatFailTwiceAreAllRead) {
    medium.failuresLeft = {{5, 2}, {6, 3}, {100, 3}, {400, 3}};
    const auto result = readAll();
    EXPECT_FALSE(result.failure);
    EXPECT_EQ(read(result.bytes), medium.bytes);
}

TEST_F(IsolatingReaderTest, LargeReadsThatFailNearTheEndLoseNoReadableSector) {
    medium.largeReadsEndAt = sectors - 7;
    const auto result = readAll();
    EXPECT_FALSE(result.failure);
    EXPECT_EQ(read(result.bytes), medium.bytes);
}

TEST_F(IsolatingReaderTest, AReadThatFailsForNoSectorsSakeIsMadeUpForBySingleSectors) {
    medium.failingRead = 1;
    const auto result = readAll();
    EXPECT_FALSE(result.failure);
    EXPECT_EQ(read(result.bytes), medium.bytes);
    EXPECT_THAT(medium.failed(), SizeIs(1));
}

TEST_F(IsolatingReaderTest, AMediumErrorMayHaveAnyNumber) {
    for (const int error : {EIO, ENODATA, EILSEQ, ETIMEDOUT}) {
        medium.commands.clear();
        medium.error = error;
        medium.failuresLeft = {{9, FaultyMedium::always}};
        const auto result = readAll();
        ASSERT_TRUE(result.failure);
        EXPECT_EQ(result.failure->kind, Kind::Unreadable);
        EXPECT_EQ(result.failure->error, error);
    }
}

TEST_F(IsolatingReaderTest, ADiscThatIsGoneIsNotSearchedForBadSectors) {
    for (const int error : {ENOMEDIUM, ENODEV, ENXIO}) {
        medium.commands.clear();
        medium.error = error;
        medium.failuresLeft = {{9, FaultyMedium::always}};
        const auto result = readAll();
        ASSERT_TRUE(result.failure);
        EXPECT_EQ(result.failure->kind, Kind::Removed);
        EXPECT_THAT(medium.commands, SizeIs(1));
    }
}

TEST_F(IsolatingReaderTest, AnErrorAfterASwapIsAChangedDiscAndNotABadSector) {
    medium.failuresLeft = {{9, FaultyMedium::always}};
    medium.confirmed = Medium::State::Changed;
    const auto result = readAll();
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->kind, Kind::Changed);
    EXPECT_EQ(result.bytes, 0U);
}

TEST_F(IsolatingReaderTest, AnErrorAfterAResetOfWhichNothingMoreIsKnownIsOne) {
    medium.failuresLeft = {{9, FaultyMedium::always}};
    medium.confirmed = Medium::State::Unsure;
    const auto result = readAll();
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->kind, Kind::Unsure);
}

TEST_F(IsolatingReaderTest, AnErrorAfterAnEjectIsARemovedDisc) {
    medium.failuresLeft = {{9, FaultyMedium::always}};
    medium.confirmed = Medium::State::Removed;
    const auto result = readAll();
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->kind, Kind::Removed);
}

TEST_F(IsolatingReaderTest, NothingIsReadFromAnotherDisc) {
    medium.now = Medium::State::Changed;
    const auto result = readAll();
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->kind, Kind::Changed);
    EXPECT_THAT(medium.commands, IsEmpty());
}

TEST_F(IsolatingReaderTest, AShortLastSectorIsReadAndIsolatedLikeAnyOther) {
    medium.bytes = patternBytes(10 * sectorBytes + 5);
    EXPECT_EQ(readAll().bytes, medium.bytes.size());
    EXPECT_EQ(read(medium.bytes.size()), medium.bytes);
    medium.failuresLeft = {{10, FaultyMedium::always}};
    const auto result = readAll();
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->sector, 10U);
    EXPECT_EQ(result.bytes, 10 * sectorBytes);
}

TEST_F(IsolatingReaderTest, OneSectorIsAskedForOnItsOwn) {
    medium.failuresLeft = {{3, FaultyMedium::always}};
    IsolatingReader reader(medium);
    EXPECT_TRUE(reader.isReadable(2));
    EXPECT_FALSE(reader.isReadable(3));
    EXPECT_TRUE(reader.isReadable(4));
    EXPECT_FALSE(reader.isReadable(sectors));
}

}  // namespace
