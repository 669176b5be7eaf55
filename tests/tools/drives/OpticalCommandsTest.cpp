#include "OpticalCommands.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "ScratchFolder.h"
#include "ScsiCommand.h"

namespace {

std::vector<std::byte> bytes(const std::vector<unsigned>& values) {
    std::vector<std::byte> result;
    for (const unsigned value : values) {
        result.push_back(static_cast<std::byte>(value));
    }
    return result;
}

TEST(OpticalCommandsTest, TheCurrentProfileIsTheLastTwoBytesOfTheHeader) {
    EXPECT_EQ(OpticalCommands::profileIn(bytes({0, 0, 0, 4, 0, 0, 0x01, 0x2B})), 0x012B);
    EXPECT_EQ(OpticalCommands::profileIn(bytes({0, 0, 0, 4, 0, 0, 0x01})), std::nullopt);
    EXPECT_EQ(OpticalCommands::profileIn({}), std::nullopt);
}

TEST(OpticalCommandsTest, ADiscIsBlankOnlyWhenItsStatusBitsAreZero) {
    EXPECT_TRUE(OpticalCommands::isBlankIn(bytes({0, 32, 0x10})));
    EXPECT_FALSE(OpticalCommands::isBlankIn(bytes({0, 32, 0x11})));  // appendable
    EXPECT_FALSE(OpticalCommands::isBlankIn(bytes({0, 32, 0x0E})));  // complete
}

TEST(OpticalCommandsTest, AnAnswerThatDoesNotReachTheStatusSaysNothingOfABlankDisc) {
    EXPECT_FALSE(OpticalCommands::isBlankIn(bytes({0, 32})));
    EXPECT_FALSE(OpticalCommands::isBlankIn({}));
}

TEST(OpticalCommandsTest, WhatIsNoDriveTellsNothing) {
    const ScratchFolder folder;
    const int file = open(folder.write("file", "x").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    EXPECT_EQ(OpticalCommands::currentProfile(file), std::nullopt);
    EXPECT_FALSE(OpticalCommands::discIsBlank(file));
    EXPECT_EQ(OpticalCommands::layout(file), DiscLayout{});
    const auto result = ScsiCommand::run(file, bytes({0x46}), {}, std::chrono::seconds(1));
    EXPECT_EQ(result.error, ENOTTY);
    EXPECT_EQ(result.bytes, 0U);
    close(file);
}

}  // namespace
