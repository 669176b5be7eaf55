#include "UDisks.h"

#include <gmock/gmock.h>

namespace {

using Result = DiscService::Result;

TEST(UDisksTest, ADevicesObjectIsNamedByItsLettersAndDigits) {
    EXPECT_EQ(UDisks::objectPath("sr0"), "/org/freedesktop/UDisks2/block_devices/sr0");
    EXPECT_EQ(UDisks::objectPath("a-b_c"), "/org/freedesktop/UDisks2/block_devices/a_2db_5fc");
}

TEST(UDisksTest, AServiceThatIsNotThereIsUnavailableNotAFailure) {
    for (const char* name : {"ServiceUnknown", "NameHasNoOwner", "Spawn.ServiceNotFound",
                             "UnknownObject", "UnknownMethod", "Disconnected"}) {
        EXPECT_EQ(UDisks::resultOf(std::string("org.freedesktop.DBus.Error.") + name),
                  Result::Unavailable)
            << name;
    }
}

TEST(UDisksTest, TheServicesOwnErrorsAreFailures) {
    EXPECT_EQ(UDisks::resultOf("org.freedesktop.UDisks2.Error.Failed"), Result::Failed);
    EXPECT_EQ(UDisks::resultOf("org.freedesktop.UDisks2.Error.NotAuthorized"), Result::Failed);
    EXPECT_EQ(UDisks::resultOf("org.freedesktop.DBus.Error.AccessDenied"), Result::Failed);
    EXPECT_EQ(UDisks::resultOf("org.freedesktop.DBus.Error.NoReply"), Result::Failed);
    EXPECT_EQ(UDisks::resultOf(""), Result::Failed);
}

TEST(UDisksTest, ABusyDeviceIsToldApartAndAnUnmountedOneIsDone) {
    EXPECT_EQ(UDisks::resultOf("org.freedesktop.UDisks2.Error.DeviceBusy"), Result::Busy);
    EXPECT_EQ(UDisks::resultOf("org.freedesktop.UDisks2.Error.NotMounted"), Result::Done);
}

TEST(UDisksTest, AFolderThatIsNotMountedCannotBeUnmounted) {
    UDisks service;
    std::string problem;
    EXPECT_EQ(service.unmountFolder("/nonexistent", &problem), Result::Failed);
    EXPECT_NE(problem, "");
}

}  // namespace
