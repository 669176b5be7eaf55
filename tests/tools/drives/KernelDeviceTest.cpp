#include "KernelDevice.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <vector>

#include "ScratchFolder.h"

namespace {

using Ejected = DeviceAccess::Ejected;

TEST(KernelDeviceTest, TheCurrentProfileIsTheLastTwoBytesOfTheHeader) {
    const std::vector<std::uint8_t> answer = {0, 0, 0, 4, 0, 0, 0x01, 0x2B};
    EXPECT_EQ(KernelDevice::profileIn(answer.data(), answer.size()), 0x012B);
    EXPECT_EQ(KernelDevice::profileIn(answer.data(), 7), std::nullopt);
    EXPECT_EQ(KernelDevice::profileIn(answer.data(), 0), std::nullopt);
}

TEST(KernelDeviceTest, ADiscIsBlankOnlyWhenItsStatusBitsAreZero) {
    const std::vector<std::uint8_t> blank = {0, 32, 0x10};
    const std::vector<std::uint8_t> appendable = {0, 32, 0x11};
    const std::vector<std::uint8_t> complete = {0, 32, 0x0E};
    EXPECT_TRUE(KernelDevice::isBlankIn(blank.data(), blank.size()));
    EXPECT_FALSE(KernelDevice::isBlankIn(appendable.data(), appendable.size()));
    EXPECT_FALSE(KernelDevice::isBlankIn(complete.data(), complete.size()));
    EXPECT_FALSE(KernelDevice::isBlankIn(blank.data(), 0));
}

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
