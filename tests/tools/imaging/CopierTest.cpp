#include "Copier.h"

#include <gmock/gmock.h>

#include "FaultyMedium.h"
#include "ScratchFolder.h"

using testing::SizeIs;

namespace {

using Kind = CopyResult::Kind;

constexpr std::size_t sectorBytes = 2048;
constexpr std::size_t mebibyte = 1024UL * 1024;

// A descriptor of an ISO 9660 file system of so many sectors, in an image of as many as it takes.
std::string isoImage(std::size_t imageSectors, std::uint32_t fileSystemSectors) {
    std::string image = patternBytes(imageSectors * sectorBytes);
    std::string descriptor(sectorBytes, '\0');
    descriptor[0] = 1;
    descriptor.replace(1, 5, "CD001");
    for (int i = 0; i < 4; ++i) {
        descriptor[80 + static_cast<std::size_t>(i)] =
            static_cast<char>(fileSystemSectors >> (8 * i) & 0xff);
    }
    descriptor[129] = 8;  // 2048
    image.replace(16 * sectorBytes, sectorBytes, descriptor);
    return image;
}

TEST(CopierTest, TheImageIsTheMediumByteForByteAtEverySize) {
    for (const std::size_t size :
         {std::size_t{1}, sectorBytes - 1, sectorBytes, sectorBytes + 1, std::size_t{4095},
          std::size_t{4096}, std::size_t{4097}, mebibyte - 1, mebibyte, mebibyte + 1,
          mebibyte + sectorBytes, 9 * mebibyte - 1, 9 * mebibyte, 9 * mebibyte + 513}) {
        FaultyMedium medium(patternBytes(size));
        FaultySink sink;
        Copier copier(medium, sink);
        const auto result = copier.run();
        EXPECT_EQ(result.kind, Kind::Copied) << size;
        EXPECT_EQ(result.bytes, size);
        EXPECT_EQ(copier.bytesWritten(), size);
        EXPECT_TRUE(sink.bytes == medium.bytes) << size;
        EXPECT_TRUE(sink.finished);
        EXPECT_EQ(result.sectorsLeftOut, 0U);
    }
}

TEST(CopierTest, FramesOfSoundAreCopiedWhole) {
    FaultyMedium medium(patternBytes(2352UL * 1000), 2352);
    FaultySink sink;
    EXPECT_EQ(Copier(medium, sink).run().kind, Kind::Copied);
    EXPECT_TRUE(sink.bytes == medium.bytes);
    for (const auto& command : medium.commands) {
        EXPECT_EQ(command.count, std::min<std::uint64_t>(256, 1000 - command.sector));
    }
}

TEST(CopierTest, AnEmptyMediumIsAnEmptyImage) {
    FaultyMedium medium("");
    FaultySink sink;
    const auto result = Copier(medium, sink).run();
    EXPECT_EQ(result.kind, Kind::Copied);
    EXPECT_EQ(result.bytes, 0U);
}

TEST(CopierTest, WhicheverReadFailsOnceTheImageIsWhole) {
    const std::string content = patternBytes(3 * mebibyte + 7 * sectorBytes);
    FaultyMedium counted(content);
    FaultySink ignored;
    Copier(counted, ignored).run();
    ASSERT_THAT(counted.commands, SizeIs(4));
    for (std::uint64_t failing = 1; failing <= 600; ++failing) {
        FaultyMedium medium(content);
        medium.failingRead = failing;
        // After the first failure single sectors follow: the sweep goes through those, too.
        medium.failuresLeft = {{600, 1}};
        FaultySink sink;
        const auto result = Copier(medium, sink).run();
        ASSERT_EQ(result.kind, Kind::Copied) << failing;
        ASSERT_TRUE(sink.bytes == content) << failing;
    }
}

TEST(CopierTest, WhicheverSectorIsBadTheImageHoldsAllBeforeItAndNothingElse) {
    const std::string content = patternBytes(mebibyte + 40 * sectorBytes);
    const std::uint64_t sectors = content.size() / sectorBytes;
    for (std::uint64_t bad = 0; bad < sectors; ++bad) {
        FaultyMedium medium(content);
        medium.failuresLeft = {{bad, FaultyMedium::always}};
        FaultySink sink;
        const auto result = Copier(medium, sink).run();
        ASSERT_EQ(result.kind, Kind::Unreadable) << bad;
        ASSERT_EQ(result.sector, bad);
        ASSERT_EQ(result.error, EIO);
        ASSERT_EQ(result.bytes, bad * sectorBytes);
        ASSERT_TRUE(sink.bytes == content.substr(0, bad * sectorBytes)) << bad;
        ASSERT_FALSE(sink.finished);
        // Three to isolate it; one more where the last sector might have been a run-out.
        ASSERT_LE(medium.failed().size(), 4U) << bad;
    }
}

TEST(CopierTest, WhicheverWriteFailsTheCopyEndsWithItsError) {
    const std::string content = patternBytes(12 * mebibyte);
    for (std::uint64_t failing = 1; failing <= 12; ++failing) {
        FaultyMedium medium(content);
        FaultySink sink;
        sink.failingAppend = failing;
        const auto result = Copier(medium, sink).run();
        EXPECT_EQ(result.kind, Kind::WriteFailed) << failing;
        EXPECT_EQ(result.error, ENOSPC);
        EXPECT_EQ(result.bytes, (failing - 1) * mebibyte);
        EXPECT_TRUE(sink.bytes == content.substr(0, (failing - 1) * mebibyte));
        EXPECT_FALSE(sink.finished);
    }
}

TEST(CopierTest, AnImageThatDoesNotReachTheDiskIsAFailure) {
    FaultyMedium medium(patternBytes(mebibyte));
    FaultySink sink;
    sink.finishFails = true;
    const auto result = Copier(medium, sink).run();
    EXPECT_EQ(result.kind, Kind::WriteFailed);
    EXPECT_EQ(result.error, EIO);
}

TEST(CopierTest, StoppingEndsTheCopy) {
    FaultyMedium medium(patternBytes(20 * mebibyte));
    FaultySink sink;
    Copier copier(medium, sink);
    medium.beforeRead = [&] {
        if (medium.commands.size() == 3) {
            copier.stop();
        }
    };
    const auto result = copier.run();
    EXPECT_EQ(result.kind, Kind::Stopped);
    EXPECT_THAT(medium.commands, SizeIs(4));
    EXPECT_FALSE(sink.finished);
}

TEST(CopierTest, ADiscSwappedWithoutAnyErrorIsNeverAFinishedImage) {
    FaultyMedium medium(patternBytes(3 * mebibyte));
    medium.confirmed = Medium::State::Changed;
    FaultySink sink;
    EXPECT_EQ(Copier(medium, sink).run().kind, Kind::Changed);
    EXPECT_FALSE(sink.finished);
}

TEST(CopierTest, AResetThatMayHaveHiddenASwapIsNeverAFinishedImage) {
    FaultyMedium medium(patternBytes(3 * mebibyte));
    medium.confirmed = Medium::State::Unsure;
    FaultySink sink;
    EXPECT_EQ(Copier(medium, sink).run().kind, Kind::Unsure);
    EXPECT_FALSE(sink.finished);
}

TEST(CopierTest, ADiscRemovedAfterTheLastReadIsNoticed) {
    FaultyMedium medium(patternBytes(3 * mebibyte));
    medium.confirmed = Medium::State::Removed;
    FaultySink sink;
    EXPECT_EQ(Copier(medium, sink).run().kind, Kind::Removed);
    EXPECT_FALSE(sink.finished);
}

TEST(CopierTest, ADiscSwappedBetweenTwoReadsEndsTheCopy) {
    FaultyMedium medium(patternBytes(10 * mebibyte));
    medium.beforeRead = [&] {
        if (medium.commands.size() == 4) {
            medium.now = Medium::State::Changed;
        }
    };
    FaultySink sink;
    EXPECT_EQ(Copier(medium, sink).run().kind, Kind::Changed);
    EXPECT_THAT(medium.commands, SizeIs(5));
}

TEST(CopierTest, RunOutSectorsBeyondTheFileSystemAreLeftOut) {
    for (const std::uint64_t unreadable : {1UL, 2UL}) {
        FaultyMedium medium(isoImage(700, 698));
        for (std::uint64_t i = 700 - unreadable; i < 700; ++i) {
            medium.failuresLeft[i] = FaultyMedium::always;
        }
        FaultySink sink;
        const auto result = Copier(medium, sink).run();
        EXPECT_EQ(result.kind, Kind::Copied);
        EXPECT_EQ(result.sectorsLeftOut, unreadable);
        EXPECT_EQ(result.bytes, (700 - unreadable) * sectorBytes);
        EXPECT_TRUE(sink.bytes == medium.bytes.substr(0, result.bytes));
        EXPECT_TRUE(sink.finished);
    }
}

TEST(CopierTest, LargeReadsThatFailBeforeTheRunOutLoseNoReadableSector) {
    FaultyMedium medium(isoImage(700, 650));
    medium.failuresLeft = {{698, FaultyMedium::always}, {699, FaultyMedium::always}};
    medium.largeReadsEndAt = 660;
    FaultySink sink;
    const auto result = Copier(medium, sink).run();
    EXPECT_EQ(result.kind, Kind::Copied);
    EXPECT_EQ(result.sectorsLeftOut, 2U);
    EXPECT_TRUE(sink.bytes == medium.bytes.substr(0, 698 * sectorBytes));
}

TEST(CopierTest, AnUnreadableLastSectorInsideTheFileSystemIsAnError) {
    FaultyMedium medium(isoImage(700, 700));
    medium.failuresLeft = {{699, FaultyMedium::always}};
    FaultySink sink;
    const auto result = Copier(medium, sink).run();
    EXPECT_EQ(result.kind, Kind::Unreadable);
    EXPECT_EQ(result.sector, 699U);
}

TEST(CopierTest, AHoleBeforeAReadableLastSectorIsAnErrorAndNoRunOut) {
    FaultyMedium medium(isoImage(700, 650));
    medium.failuresLeft = {{698, FaultyMedium::always}};
    FaultySink sink;
    const auto result = Copier(medium, sink).run();
    EXPECT_EQ(result.kind, Kind::Unreadable);
    EXPECT_EQ(result.sector, 698U);
}

TEST(CopierTest, AnUnreadableSectorLongBeforeTheEndIsAnErrorThoughTheFileSystemEndsBeforeIt) {
    FaultyMedium medium(isoImage(700, 600));
    for (std::uint64_t i = 697; i < 700; ++i) {
        medium.failuresLeft[i] = FaultyMedium::always;
    }
    FaultySink sink;
    const auto result = Copier(medium, sink).run();
    EXPECT_EQ(result.kind, Kind::Unreadable);
    EXPECT_EQ(result.sector, 697U);
}

TEST(CopierTest, WithoutAFileSystemNothingIsARunOut) {
    FaultyMedium medium(patternBytes(700 * sectorBytes));
    medium.failuresLeft = {{698, FaultyMedium::always}, {699, FaultyMedium::always}};
    FaultySink sink;
    EXPECT_EQ(Copier(medium, sink).run().kind, Kind::Unreadable);
}

TEST(CopierTest, ABadSectorOfALaterTrackIsNumberedAsTheDriveCounts) {
    FaultyMedium medium(patternBytes(700 * sectorBytes));
    medium.first = 10'000;
    medium.failuresLeft = {{5, FaultyMedium::always}};
    FaultySink sink;
    EXPECT_EQ(Copier(medium, sink).run().sector, 10'005U);
}

TEST(CopierTest, RunOutSectorsOfALaterTrackAreLeftOutHoweverItsFileSystemCounts) {
    for (const std::uint32_t end : {698U, 10'698U}) {
        FaultyMedium medium(isoImage(700, end));
        medium.first = 10'000;
        medium.failuresLeft = {{698, FaultyMedium::always}, {699, FaultyMedium::always}};
        FaultySink sink;
        const auto result = Copier(medium, sink).run();
        EXPECT_EQ(result.kind, Kind::Copied) << end;
        EXPECT_EQ(result.sectorsLeftOut, 2U) << end;
    }
    for (const std::uint32_t end : {699U, 10'699U, 10'700U}) {
        FaultyMedium medium(isoImage(700, end));
        medium.first = 10'000;
        medium.failuresLeft = {{698, FaultyMedium::always}, {699, FaultyMedium::always}};
        FaultySink sink;
        const auto result = Copier(medium, sink).run();
        EXPECT_EQ(result.kind, Kind::Unreadable) << end;
        EXPECT_EQ(result.sector, 10'698U) << end;
    }
}

TEST(CopierTest, AFileSystemThatClaimsMoreThanTheDiscHasIsReported) {
    FaultyMedium medium(isoImage(700, 900));
    FaultySink sink;
    const auto result = Copier(medium, sink).run();
    EXPECT_EQ(result.kind, Kind::Copied);
    EXPECT_EQ(result.fileSystemSectors, 900U);
    EXPECT_TRUE(sink.bytes == medium.bytes);

    FaultyMedium padded(isoImage(700, 600));
    FaultySink second;
    EXPECT_FALSE(Copier(padded, second).run().fileSystemSectors);
    EXPECT_TRUE(second.bytes == padded.bytes);
}

}  // namespace
