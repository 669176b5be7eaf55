#include "DeviceHolders.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "FakeMachine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DeviceHoldersTest, WhoHasTheDeviceOpenIsFoundByRisingProcessNumber) {
    FakeMachine machine;
    machine.addProcess(200, "vlc", {{"fd/7", "/dev/sr0"}});
    machine.addProcess(30, "dd", {{"fd/0", "/dev/sr0"}, {"fd/1", "/tmp/out"}});
    machine.addProcess(31, "cat", {{"fd/0", "/dev/sr01"}, {"cwd", "/"}});
    EXPECT_THAT(DeviceHolders::find(machine.paths().processes, "/dev/sr0", {}),
                ElementsAre(DeviceHolder{30, "dd"}, DeviceHolder{200, "vlc"}));
}

TEST(DeviceHoldersTest, WhoUsesAFileOrAFolderOfTheMountedDiscIsFound) {
    FakeMachine machine;
    machine.addProcess(10, "bash", {{"cwd", "/media/A Disc"}});
    machine.addProcess(11, "less", {{"cwd", "/"}, {"fd/4", "/media/A Disc/read me"}});
    machine.addProcess(12, "setup", {{"exe", "/media/A Disc/bin/setup"}});
    machine.addProcess(13, "other", {{"cwd", "/media/A Disc 2"}});
    EXPECT_THAT(
        DeviceHolders::find(machine.paths().processes, "/dev/sr0", {"/media/A Disc"}),
        ElementsAre(DeviceHolder{10, "bash"}, DeviceHolder{11, "less"}, DeviceHolder{12, "setup"}));
}

TEST(DeviceHoldersTest, ThisProcessIsNeverItsOwnHolder) {
    FakeMachine machine;
    machine.addProcess(getpid(), "drutil", {{"fd/3", "/dev/sr0"}});
    EXPECT_THAT(DeviceHolders::find(machine.paths().processes, "/dev/sr0", {}), IsEmpty());
}

TEST(DeviceHoldersTest, AProcessThatEndsMeanwhileIsNoTrouble) {
    FakeMachine machine;
    machine.addProcess(10, "gone", {{"fd/3", "/dev/sr0"}});
    unlink(machine.path("proc/10/comm").c_str());
    EXPECT_THAT(DeviceHolders::find(machine.paths().processes, "/dev/sr0", {}),
                ElementsAre(DeviceHolder{10, ""}));
    EXPECT_THAT(DeviceHolders::find("/nonexistent", "/dev/sr0", {}), IsEmpty());
}

TEST(DeviceHoldersTest, TheSentenceNamesEveryHolder) {
    EXPECT_EQ(DeviceHolders::sentence("/dev/sr0", {}), "/dev/sr0 is in use by another program.");
    EXPECT_EQ(DeviceHolders::sentence("/dev/sr0", {{12, "vlc"}}),
              "/dev/sr0 is in use by vlc (process 12).");
    EXPECT_EQ(DeviceHolders::sentence("/dev/sr0", {{12, "vlc"}, {34, ""}, {56, "dd"}}),
              "/dev/sr0 is in use by vlc (process 12), a program (process 34) and dd (process "
              "56).");
}

TEST(DeviceHoldersTest, AProgramsOddNameStaysOneLineOfUtf8) {
    FakeMachine machine;
    machine.addProcess(10, "a\nb\xFF", {{"fd/3", "/dev/sr0"}});
    EXPECT_THAT(DeviceHolders::find(machine.paths().processes, "/dev/sr0", {}),
                ElementsAre(DeviceHolder{10, "a b\xEF\xBF\xBD"}));
}

}  // namespace
