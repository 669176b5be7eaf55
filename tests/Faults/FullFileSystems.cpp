// File systems that really are full, where the tables only say so.
#include <gtest/gtest.h>

#include <QFile>

#include "FaultWorld.h"
#include "SmallFileSystem.h"

namespace {

constexpr qsizetype imageBytes = 1300 * 2048;

// Takes every byte that is left there.
void fill(const QString& folder) {
    QFile file(folder + QStringLiteral("/filling"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (file.write(QByteArray(4096, 'x')) > 0) {
    }
}

class FullFileSystem : public testing::Test {
protected:
    // Of a run that fails.
    std::string says(const char* words, const std::string& rule = {},
                     const FaultWorld::Meanwhile& meanwhile = {}) {
        const auto ending = world.run(QString::fromLatin1(words), rule, meanwhile);
        EXPECT_EQ(ending.status, 1);
        return ending.says;
    }

    FaultWorld world{imageBytes};
    QString temporary = world.folder.path(QStringLiteral("tmp"));
};

#define NEEDS_PRELOADING_AND_ANOTHER_FILE_SYSTEM() \
    NEEDS_PRELOADING();                            \
    NEEDS_ANOTHER_FILE_SYSTEM(OtherFileSystem(world.folder))

TEST_F(FullFileSystem, ADestinationThatFillsUpWhileTheDiscIsReadKeepsTheTemporaryImage) {
    NEEDS_PRELOADING_AND_ANOTHER_FILE_SYSTEM();
    const SmallFileSystem small(world.other(), "4M");
    NEEDS_A_SMALL_FILE_SYSTEM(small);
    EXPECT_EQ(says("rip -o OTHER", "hdiutil write .cdr 2 PAUSE",
                   [this](CliProgram&) { fill(world.other()); }),
              "hdiutil exited with an error: Could not move image into place: No space left on "
              "device\nWhat was read is left in “tmp/ID.cdr”; see “spindrift-cli leftovers”.");
    EXPECT_EQ(world.left(), "other/filling=WRONG tmp/ID.cdr=disc");
    EXPECT_TRUE(QFile::remove(world.other() + QStringLiteral("/filling")));
    EXPECT_EQ(world.nextRip(QStringLiteral("OTHER")), "");
}

TEST_F(FullFileSystem, AFullDestinationIsKnownBeforeTheDiscIsRead) {
    NEEDS_PRELOADING_AND_ANOTHER_FILE_SYSTEM();
    const SmallFileSystem small(world.other(), "4M");
    NEEDS_A_SMALL_FILE_SYSTEM(small);
    fill(world.other());
    EXPECT_EQ(says("rip -o OTHER"),
              "“other” lacks 2.7 MB of room for the image, which takes 2.7 MB. Choose a folder "
              "with more room. Or use --force to try it nevertheless.");
    EXPECT_EQ(world.left(), "other/filling=WRONG");
}

TEST_F(FullFileSystem, AFullTemporaryFolderIsGoneRound) {
    NEEDS_PRELOADING();
    const SmallFileSystem small(temporary, "1M");
    NEEDS_A_SMALL_FILE_SYSTEM(small);
    fill(temporary);
    EXPECT_EQ(world.nextRip(QStringLiteral("SAME")), "");
    EXPECT_EQ(world.left(), "data/.lock data/speedlog.json=1 same/disc.iso=disc tmp/filling=WRONG");
}

TEST_F(FullFileSystem, ASpeedTestWithoutRoomLeavesNothing) {
    NEEDS_PRELOADING();
    const SmallFileSystem small(temporary, "1M");
    NEEDS_A_SMALL_FILE_SYSTEM(small);
    EXPECT_EQ(says("speed-test"), "Speed test failed (exit code 1).");
    EXPECT_EQ(world.left(), "");
}

TEST_F(FullFileSystem, ASecondImageWithoutRoomKeepsTheFirst) {
    NEEDS_PRELOADING_AND_ANOTHER_FILE_SYSTEM();
    const SmallFileSystem small(temporary, "4M");
    NEEDS_A_SMALL_FILE_SYSTEM(small);
    EXPECT_EQ(says("rip --thorough -o OTHER", "hdiutil open verify 1 PAUSE",
                   [this](CliProgram&) { fill(temporary); }),
              "Could not re-read the disc to verify.");
    EXPECT_EQ(world.left(),
              "data/.lock data/speedlog.json=1 other/disc.iso=disc tmp/filling=WRONG");
}

}  // namespace
