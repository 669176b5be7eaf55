#include "UDisks.h"

#include <gmock/gmock.h>

namespace {

using Kind = Failure::Kind;

TEST(UDisksTest, ADevicesObjectIsNamedByItsLettersAndDigits) {
    EXPECT_EQ(UDisks::objectPath("sr0"), "/org/freedesktop/UDisks2/block_devices/sr0");
    EXPECT_EQ(UDisks::objectPath("a-b_c"), "/org/freedesktop/UDisks2/block_devices/a_2db_5fc");
}

TEST(UDisksTest, AServiceThatIsNotThereIsUnavailableNotAFailure) {
    for (const char* name : {"ServiceUnknown", "NameHasNoOwner", "Spawn.ServiceNotFound",
                             "UnknownObject", "UnknownMethod", "Disconnected"}) {
        EXPECT_EQ(UDisks::kindOf(std::string("org.freedesktop.DBus.Error.") + name),
                  Kind::Unavailable)
            << name;
    }
}

TEST(UDisksTest, TheServicesOwnErrorsAreFailures) {
    EXPECT_EQ(UDisks::kindOf("org.freedesktop.UDisks2.Error.Failed"), Kind::System);
    EXPECT_EQ(UDisks::kindOf("org.freedesktop.UDisks2.Error.NotAuthorized"), Kind::System);
    EXPECT_EQ(UDisks::kindOf("org.freedesktop.DBus.Error.AccessDenied"), Kind::System);
    EXPECT_EQ(UDisks::kindOf("org.freedesktop.DBus.Error.NoReply"), Kind::System);
    EXPECT_EQ(UDisks::kindOf(""), Kind::System);
}

TEST(UDisksTest, ABusyDeviceIsToldApartAndAnUnmountedOneIsDone) {
    EXPECT_EQ(UDisks::kindOf("org.freedesktop.UDisks2.Error.DeviceBusy"), Kind::Busy);
    EXPECT_EQ(UDisks::kindOf("org.freedesktop.UDisks2.Error.NotMounted"), std::nullopt);
}

TEST(UDisksTest, AFolderThatIsNotMountedCannotBeUnmounted) {
    UDisks service;
    const auto unmounted = service.unmountFolder("/nonexistent");
    ASSERT_FALSE(unmounted);
    EXPECT_NE(unmounted.failure().sentence, "");
}

}  // namespace
