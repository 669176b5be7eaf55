#include "MountTable.h"

#include <gmock/gmock.h>

#include "FakeMachine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char* const recording =
    "22 28 0:20 / /proc rw,nosuid - proc proc rw\n"
    "30 28 11:0 / /media/user/My\\040Disc ro,nosuid shared:5 - iso9660 /dev/sr0 ro,uid=1000\n"
    "31 28 11:1 / /mnt/other ro - udf /dev/sr1 ro\n"
    "32 28 11:0 /folder /mnt/again ro - iso9660 /dev/sr0 ro\n";

TEST(MountTableTest, TheFoldersOfOneDeviceAreFoundTheLastMountedFirst) {
    EXPECT_THAT(MountTable::mountPoints(recording, "11:0"),
                ElementsAre("/mnt/again", "/media/user/My Disc"));
    EXPECT_THAT(MountTable::mountPoints(recording, "11:1"), ElementsAre("/mnt/other"));
}

TEST(MountTableTest, ADeviceThatIsNotMountedHasNoFolders) {
    EXPECT_THAT(MountTable::mountPoints(recording, "11:10"), IsEmpty());
    EXPECT_THAT(MountTable::mountPoints("", "11:0"), IsEmpty());
}

TEST(MountTableTest, CutAndEmptyLinesAreSkipped) {
    EXPECT_THAT(MountTable::mountPoints("\n\n30 28 11:0\n30 28 11:0 /\n", "11:0"), IsEmpty());
    EXPECT_THAT(MountTable::mountPoints("30 28 11:0 / /mnt", "11:0"), ElementsAre("/mnt"));
}

TEST(MountTableTest, OnlyWholeOctalCodesAreDecoded) {
    EXPECT_EQ(MountTable::decoded("a\\040b\\011c\\134d"), "a b\tc\\d");
    EXPECT_EQ(MountTable::decoded("\\04"), "\\04");
    EXPECT_EQ(MountTable::decoded("\\089"), "\\089");
    EXPECT_EQ(MountTable::decoded("\\400"), "\\400");
}

TEST(MountTableTest, AMissingTableMeansNoMounts) {
    EXPECT_THAT(MountTable::read("/nonexistent", "11:0"), IsEmpty());
}

}  // namespace
