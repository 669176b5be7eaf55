#include "DeviceLock.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>

#include "DescriptorHolder.h"
#include "FakeMachine.h"

namespace {

class DeviceLockTest : public testing::Test {
protected:
    DescriptorHolder device() {
        machine.addDrive("sr0", "11:0");
        return DescriptorHolder(open(machine.path("dev/sr0").c_str(), O_RDONLY | O_CLOEXEC));
    }
    Result<void> hold(const DescriptorHolder& file) const {
        return DeviceLock::holdForReading(file.get(), "/dev/sr0", machine.paths().processes);
    }
    Result<void> check(const DescriptorHolder& file) const {
        return DeviceLock::checkThatNobodyReads(file.get(), "/dev/sr0", machine.paths().processes);
    }

    FakeMachine machine;
    const DescriptorHolder first = device();
    const DescriptorHolder second = device();
};

TEST_F(DeviceLockTest, OneProgramAtATimeReads) {
    EXPECT_TRUE(hold(first));
    const Failure busy{Failure::Kind::Busy, "/dev/sr0 is busy: another program reads it"};
    EXPECT_EQ(hold(second).failure(), busy);
    EXPECT_EQ(check(second).failure(), busy);
}

TEST_F(DeviceLockTest, TheLockGoesWithItsDescriptor) {
    {
        const DescriptorHolder reader = device();
        EXPECT_TRUE(hold(reader));
    }
    EXPECT_TRUE(check(second));
    EXPECT_TRUE(hold(second));
}

TEST_F(DeviceLockTest, TheDeviceManagerGoesOnLookingAtADriveThatIsRead) {
    EXPECT_TRUE(hold(first));
    EXPECT_EQ(flock(second.get(), LOCK_SH | LOCK_NB), 0);
}

TEST_F(DeviceLockTest, AskingLocksNothing) {
    EXPECT_TRUE(check(first));
    EXPECT_EQ(flock(second.get(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(DeviceLockTest, TheReaderIsTheProgramThatStartedTheImaging) {
    machine.addProcess(12, "hdiutil", {{"fd/3", machine.path("dev/sr0")}}, 7);
    machine.addProcess(7, "spindrift", {});
    machine.addProcess(3, "vlc", {{"fd/3", machine.path("dev/sr0")}});
    EXPECT_TRUE(hold(first));
    EXPECT_EQ(check(second).failure().sentence, "/dev/sr0 is busy: spindrift (pid 7) reads it");
    EXPECT_EQ(hold(second).failure().sentence, "/dev/sr0 is busy: spindrift (pid 7) reads it");
}

TEST_F(DeviceLockTest, ImagingThatAShellStartedIsNamedItself) {
    machine.addProcess(12, "hdiutil", {{"fd/3", machine.path("dev/sr0")}}, 7);
    machine.addProcess(7, "bash", {});
    EXPECT_TRUE(hold(first));
    EXPECT_EQ(check(second).failure().sentence, "/dev/sr0 is busy: hdiutil (pid 12) reads it");
}

}  // namespace
