#include "PracticeMedium.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "ScratchFolder.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::size_t sectorBytes = 2048;
constexpr std::size_t sectors = 12;

class PracticeMediumTest : public testing::Test {
protected:
    PracticeMediumTest() { m_folder.write("disc.iso", disc); }

    std::unique_ptr<Medium> insert(const std::vector<PracticeFault>& faults) {
        auto drive = PracticeDrive::read(m_folder.path());
        drive->faults = faults;
        auto medium = PracticeMedium::open(*drive);
        EXPECT_TRUE(medium) << medium.failure().sentence;
        return std::move(*medium);
    }
    static int read(Medium& medium, std::size_t sector, std::size_t count = 1) {
        std::vector<std::byte> buffer(count * sectorBytes);
        return medium.read(sector * sectorBytes, buffer);
    }
    // The sectors that cannot be read on their own, each tried once.
    static std::vector<std::size_t> unreadable(Medium& medium) {
        std::vector<std::size_t> found;
        for (std::size_t sector = 0; sector < sectors; ++sector) {
            if (read(medium, sector) != 0) {
                found.push_back(sector);
            }
        }
        return found;
    }

    const std::string disc = patternBytes(sectors * sectorBytes);

private:
    ScratchFolder m_folder;
};

TEST_F(PracticeMediumTest, AFaultIsOfItsOwnSectorsAndNoOther) {
    const auto medium = insert({{3, 4, PracticeFault::Kind::Unreadable, 1, 1}});
    EXPECT_THAT(unreadable(*medium), ElementsAre(3, 4, 5, 6));
    EXPECT_THAT(unreadable(*medium), ElementsAre(3, 4, 5, 6));
    EXPECT_EQ(read(*medium, 0, 3), 0);
    EXPECT_EQ(read(*medium, 0, 4), EIO);
    EXPECT_EQ(read(*medium, 6, 2), EIO);
    EXPECT_EQ(read(*medium, 7, 5), 0);
    EXPECT_EQ(read(*medium, 0, sectors), EIO);
}

TEST_F(PracticeMediumTest, TheFirstAndTheLastSectorCanBeBadAndAFaultCanReachBeyondTheEnd) {
    const auto medium = insert({{0, 1, PracticeFault::Kind::Unreadable, 1, 1},
                                {sectors - 1, 1'000'000, PracticeFault::Kind::Unreadable, 1, 1},
                                {sectors + 5, 1, PracticeFault::Kind::Unreadable, 1, 1}});
    EXPECT_THAT(unreadable(*medium), ElementsAre(0, sectors - 1));
}

TEST_F(PracticeMediumTest, AFlakyFaultFailsSoOftenAltogetherAndIsGoodThen) {
    const auto medium = insert({{5, 2, PracticeFault::Kind::Flaky, 3, 1}});
    EXPECT_THAT(unreadable(*medium), ElementsAre(5, 6));
    EXPECT_THAT(unreadable(*medium), ElementsAre(5));
    EXPECT_THAT(unreadable(*medium), IsEmpty());
}

TEST_F(PracticeMediumTest, FaultsThatOverlapEachCountTheReadsThatTheyFail) {
    const auto medium = insert(
        {{5, 2, PracticeFault::Kind::Flaky, 1, 1}, {6, 2, PracticeFault::Kind::Flaky, 2, 1}});
    EXPECT_EQ(read(*medium, 4, 4), EIO);
    EXPECT_EQ(read(*medium, 5), 0);
    EXPECT_EQ(read(*medium, 6), EIO);
    EXPECT_THAT(unreadable(*medium), IsEmpty());
}

TEST_F(PracticeMediumTest, ChangedSectorsAreChangedInEverySecondRunToTheirEdges) {
    const std::vector<PracticeFault> faults = {{3, 4, PracticeFault::Kind::Changed, 1, 1}};
    for (const bool changed : {false, true, false, true}) {
        const auto medium = insert(faults);
        std::vector<std::byte> buffer(disc.size());
        ASSERT_EQ(medium->read(0, buffer), 0);
        for (std::size_t sector = 0; sector < sectors; ++sector) {
            const bool same = std::memcmp(buffer.data() + sector * sectorBytes,
                                          disc.data() + sector * sectorBytes, sectorBytes) == 0;
            EXPECT_EQ(same, !(changed && sector >= 3 && sector < 7)) << sector;
        }
    }
}

TEST_F(PracticeMediumTest, WhatIsBehindTheDiscsEndIsAnErrorAndNeverASector) {
    const auto medium = insert({});
    EXPECT_EQ(read(*medium, sectors - 1), 0);
    EXPECT_EQ(read(*medium, sectors - 1, 2), EIO);
    EXPECT_EQ(read(*medium, sectors), EIO);
}

}  // namespace
