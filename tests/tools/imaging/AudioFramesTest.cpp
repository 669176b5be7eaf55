#include "AudioFrames.h"
#include "Mmc.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "ScratchFolder.h"

using testing::ElementsAre;
using testing::Pair;

namespace {

constexpr std::size_t frameBytes = Mmc::audioSectorBytes;

class AudioFramesTest : public testing::Test {
protected:
    using Calls = std::vector<std::pair<std::uint32_t, std::size_t>>;

    // A way to read the disc that notes where and how many frames, and fails when told to.
    AudioFrames::Read way(Calls& calls, int& error) {
        return [this, &calls, &error](std::uint32_t first, std::span<std::byte> frames) {
            calls.emplace_back(first, frames.size() / frameBytes);
            if (error == 0) {
                std::memcpy(frames.data(), disc.data() + first * frameBytes, frames.size());
            }
            return error;
        };
    }
    int read(std::uint32_t first, std::size_t frames) {
        buffer.assign(frames * frameBytes, std::byte{0});
        return audio.read(first, buffer);
    }
    std::string got() const {
        return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
    }

    const std::string disc = patternBytes(200 * frameBytes);
    Calls readCd;
    Calls readAudio;
    int readCdError = 0;
    int readAudioError = 0;
    AudioFrames audio{way(readCd, readCdError), way(readAudio, readAudioError)};
    std::vector<std::byte> buffer;
};

TEST_F(AudioFramesTest, ManyFramesAreReadInSeveralCommandsEachInItsPlace) {
    ASSERT_EQ(read(100, 60), 0);
    EXPECT_TRUE(got() == disc.substr(100 * frameBytes, 60 * frameBytes));
    EXPECT_THAT(readCd, ElementsAre(Pair(100, 27), Pair(127, 27), Pair(154, 6)));
    EXPECT_TRUE(readAudio.empty());
}

TEST_F(AudioFramesTest, WhereTheKernelRefusesTheCommandItsOwnCallTakesOverForGood) {
    for (const int refusal : {ENOTTY, EINVAL, EPERM}) {
        audio = AudioFrames(way(readCd, readCdError), way(readAudio, readAudioError));
        readCd.clear();
        readAudio.clear();
        readCdError = refusal;
        ASSERT_EQ(read(10, 30), 0) << refusal;
        EXPECT_TRUE(got() == disc.substr(10 * frameBytes, 30 * frameBytes));
        EXPECT_THAT(readCd, ElementsAre(Pair(10, 27)));
        EXPECT_THAT(readAudio, ElementsAre(Pair(10, 27), Pair(37, 3)));
    }
}

TEST_F(AudioFramesTest, AFrameThatCannotBeReadIsAnErrorInEitherWay) {
    readCdError = EIO;
    EXPECT_EQ(read(0, 30), EIO);
    EXPECT_THAT(readCd, ElementsAre(Pair(0, 27)));
    EXPECT_TRUE(readAudio.empty());
    readCdError = EINVAL;
    readAudioError = ENOMEDIUM;
    EXPECT_EQ(read(0, 30), ENOMEDIUM);
}

TEST_F(AudioFramesTest, TheCommandNamesTheFirstFrameTheNumberAndTheSamplesOnly) {
    const auto command = AudioFrames::readCdCommand(0x01020304, 0x050607);
    std::vector<int> bytes;
    for (const std::byte byte : command) {
        bytes.push_back(std::to_integer<int>(byte));
    }
    EXPECT_THAT(bytes, ElementsAre(0xbe, 4, 1, 2, 3, 4, 5, 6, 7, 0x10, 0, 0));
}

TEST(AudioFramesOfDriveTest, WhatIsNoDriveIsAnError) {
    std::vector<std::byte> buffer(frameBytes);
    EXPECT_EQ(AudioFrames::ofDrive(-1).read(0, buffer), EBADF);
}

}  // namespace
