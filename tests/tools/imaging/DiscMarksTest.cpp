#include "DiscMarks.h"

#include <gtest/gtest.h>

#include "ScratchFolder.h"

namespace {

constexpr std::size_t sectorBytes = 2048;

class DiscMarksTest : public testing::Test {
protected:
    // A disc of noise with a volume descriptor of this kind at the sector.
    static std::string disc(std::size_t sectors, const std::string& kind, std::size_t at = 16) {
        std::string content(sectors * sectorBytes, 'x');
        content.replace(at * sectorBytes + 1, kind.size(), kind);
        return content;
    }
    std::optional<DiscMarks> marks(const std::string& content, std::uint64_t firstSector = 0) {
        return DiscMarks::of(folder.write("disc", content), firstSector);
    }

    ScratchFolder folder;
};

TEST_F(DiscMarksTest, TheSameDiscHasTheSameMarks) {
    ASSERT_TRUE(marks(disc(400, "CD001")));
    EXPECT_EQ(marks(disc(400, "CD001")), marks(disc(400, "CD001")));
}

TEST_F(DiscMarksTest, EachSizeAndEachDescriptorMakesAnotherDisc) {
    const std::string content = disc(400, "CD001");
    EXPECT_NE(marks(content), marks(disc(401, "CD001")));
    for (const std::size_t sector : {16U, 17U, 47U, 256U}) {
        std::string other = content;
        other[sector * sectorBytes + 900] = 'y';
        EXPECT_NE(marks(content), marks(other)) << sector;
    }
}

TEST_F(DiscMarksTest, UdfIsAFileSystemToo) {
    EXPECT_TRUE(marks(disc(400, "NSR02", 17)));
    EXPECT_TRUE(marks(disc(400, "NSR03", 18)));
}

TEST_F(DiscMarksTest, WithoutAFileSystemADiscHasNoMarks) {
    EXPECT_FALSE(marks(disc(400, "CD002")));
    EXPECT_FALSE(marks(disc(10, "CD001", 2)));
    EXPECT_FALSE(marks(""));
    EXPECT_FALSE(DiscMarks::of(folder.path("none"), 0));
}

TEST_F(DiscMarksTest, ASmallDiscHasThoseThatItHasRoomFor) {
    EXPECT_TRUE(marks(disc(100, "CD001")));
}

TEST_F(DiscMarksTest, WhatHasBeenReadTellsTheSameAsTheDisc) {
    for (const std::size_t sectors : {100U, 400U}) {
        const std::string content = disc(sectors, "CD001");
        const auto beginning = std::as_bytes(std::span(content))
                                   .first(std::min(content.size(), DiscMarks::beginningBytes));
        EXPECT_EQ(DiscMarks::in(beginning, content.size()), marks(content));
    }
}

TEST_F(DiscMarksTest, TheDataMayBeginLater) {
    EXPECT_TRUE(marks(disc(400, "CD001", 116), 100));
    EXPECT_FALSE(marks(disc(400, "CD001", 116), 0));
}

}  // namespace
