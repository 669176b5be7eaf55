#include "TextOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <thread>

#include "Interruption.h"

namespace {

class TextOutputTest : public testing::Test {
protected:
    TextOutputTest() {
        ::signal(SIGPIPE, SIG_IGN);
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    }
    ~TextOutputTest() override {
        ::signal(SIGPIPE, SIG_DFL);
        ::close(ends[1]);
        if (ends[0] >= 0) {
            ::close(ends[0]);
        }
    }

    std::array<int, 2> ends = {-1, -1};
};

TEST_F(TextOutputTest, WhatIsWrittenArrivesAtOnce) {
    TextOutput output(ends[1]);
    output.write(QStringLiteral("é\n"));
    std::array<char, 16> bytes{};
    EXPECT_EQ(::read(ends[0], bytes.data(), bytes.size()), 3);
    EXPECT_FALSE(output.failure());
    EXPECT_FALSE(output.readerIsGone());
}

TEST_F(TextOutputTest, APipeIsNoTerminal) {
    EXPECT_FALSE(TextOutput(ends[1]).isTerminal());
    EXPECT_EQ(TextOutput(ends[1]).columns(), 80);
}

TEST_F(TextOutputTest, APipeGetsControlCharactersAsTheyAre) {
    TextOutput(ends[1]).write(QStringLiteral("a\x1b[31m\r"));
    std::array<char, 16> bytes{};
    EXPECT_EQ(::read(ends[0], bytes.data(), bytes.size()), 7);
}

TEST_F(TextOutputTest, AReaderThatLeavesIsNoticedBeforeAnythingIsWritten) {
    TextOutput output(ends[1]);
    ::close(ends[0]);
    ends[0] = -1;
    EXPECT_TRUE(output.readerIsGone());
    output.write(QStringLiteral("dropped"));
    EXPECT_TRUE(output.readerIsGone());
}

TEST_F(TextOutputTest, AFullDiskIsAFailureAndNotAMissingReader) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    TextOutput output(full);
    output.write(QStringLiteral("x"));
    EXPECT_EQ(output.failure(), QStringLiteral("No space left on device"));
    EXPECT_FALSE(output.readerIsGone());
    ::close(full);
}

TEST_F(TextOutputTest, AReaderThatHasStoppedReadingDoesNotHoldUpAnInterruption) {
    Interruption interruption({.status = [](int) { return 130; }});
    Interruption::begin();
    ::raise(SIGINT);
    TextOutput output(ends[1]);
    output.write(QByteArray(300'000, 'x'));
    EXPECT_TRUE(output.failure());
    EXPECT_FALSE(output.readerIsGone());
}

TEST_F(TextOutputTest, AFullPipeInNonBlockingModeIsWaitedFor) {
    ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
    const QByteArray much(300'000, 'x');
    size_t received = 0;
    std::thread reader([&] {
        std::array<char, 4096> bytes{};
        while (received < static_cast<size_t>(much.size())) {
            const ssize_t count = ::read(ends[0], bytes.data(), bytes.size());
            if (count <= 0) {
                return;
            }
            received += static_cast<size_t>(count);
        }
    });
    TextOutput output(ends[1]);
    output.write(much);
    reader.join();
    EXPECT_EQ(received, 300'000U);
    EXPECT_FALSE(output.failure());
}

}  // namespace
