#include "KernelDevice.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "ScratchFolder.h"

namespace {

using Ejected = DeviceAccess::Ejected;

TEST(KernelDeviceTest, ADriveThatAnswersTwoHasRefusedToEject) {
    EXPECT_EQ(KernelDevice::ejected(2, 0), Ejected::Refused);
    EXPECT_EQ(KernelDevice::ejected(0, EBUSY), Ejected::Yes);
}

TEST(KernelDeviceTest, TheErrorTellsWhyNothingWasEjected) {
    EXPECT_EQ(KernelDevice::ejected(-1, EBUSY), Ejected::Busy);
    EXPECT_EQ(KernelDevice::ejected(-1, EPERM), Ejected::NoAccess);
    EXPECT_EQ(KernelDevice::ejected(-1, EACCES), Ejected::NoAccess);
    EXPECT_EQ(KernelDevice::ejected(-1, ENOTTY), Ejected::NotADrive);
    EXPECT_EQ(KernelDevice::ejected(-1, EIO), Ejected::Failed);
}

TEST(KernelDeviceTest, ANodeThatHasVanishedIsAnErrorWithItsReason) {
    KernelDevice device;
    std::string error;
    EXPECT_EQ(device.medium("/nonexistent/sr0", &error), std::nullopt);
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_EQ(device.label("/nonexistent/sr0"), "");
    EXPECT_EQ(device.eject("/nonexistent/sr0", &error), Ejected::Failed);
}

TEST(KernelDeviceTest, AFileIsNoDriveToEject) {
    const ScratchFolder folder;
    KernelDevice device;
    std::string error;
    EXPECT_EQ(device.eject(folder.write("file", "x"), &error), Ejected::NotADrive);
}

}  // namespace
