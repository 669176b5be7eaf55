#include "KernelDevice.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "ScratchFolder.h"

namespace {

using Kind = Failure::Kind;

Kind ejectFailure(int result, int error) {
    return KernelDevice::ejected(result, error).failure().kind;
}

TEST(KernelDeviceTest, ADriveThatAnswersTwoHasRefusedToEject) {
    EXPECT_EQ(ejectFailure(2, 0), Kind::Refused);
    EXPECT_TRUE(KernelDevice::ejected(0, EBUSY));
}

TEST(KernelDeviceTest, TheErrorTellsWhyNothingWasEjected) {
    EXPECT_EQ(ejectFailure(-1, EBUSY), Kind::Busy);
    EXPECT_EQ(ejectFailure(-1, EPERM), Kind::NoAccess);
    EXPECT_EQ(ejectFailure(-1, EACCES), Kind::NoAccess);
    EXPECT_EQ(ejectFailure(-1, ENOTTY), Kind::NoDrive);
    EXPECT_EQ(ejectFailure(-1, EIO), Kind::System);
}

TEST(KernelDeviceTest, ANodeThatHasVanishedIsAnErrorWithItsReason) {
    KernelDevice device;
    const auto medium = device.medium("/nonexistent/sr0");
    ASSERT_FALSE(medium);
    EXPECT_EQ(medium.failure(), (Failure{Kind::System, "No such file or directory"}));
    EXPECT_EQ(device.label("/nonexistent/sr0"), "");
    EXPECT_EQ(device.eject("/nonexistent/sr0").failure().kind, Kind::System);
}

TEST(KernelDeviceTest, AFileIsNoDriveToEject) {
    const ScratchFolder folder;
    KernelDevice device;
    EXPECT_EQ(device.eject(folder.write("file", "x")).failure().kind, Kind::NoDrive);
}

}  // namespace
