// What hdiutil prints while it works.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "PuppetStrings.h"

namespace {

class PuppetStringsTest : public testing::Test {
protected:
    PuppetStringsTest() {
        std::signal(SIGPIPE, SIG_IGN);
        EXPECT_EQ(pipe2(m_pipe.data(), O_CLOEXEC), 0);
    }
    ~PuppetStringsTest() override {
        close(m_pipe[0]);
        close(m_pipe[1]);
    }

    std::string printed() const {
        std::array<char, 4096> text{};
        fcntl(m_pipe[0], F_SETFL, O_NONBLOCK);
        const ssize_t count = read(m_pipe[0], text.data(), text.size());
        return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

    std::array<int, 2> m_pipe{};
};

TEST_F(PuppetStringsTest, NumbersArePercentAndOutAtOnce) {
    PuppetStrings lines(m_pipe[1]);
    lines.unknown();
    EXPECT_EQ(printed(), "PERCENT:-1\n");
    lines.done(1, 8);
    EXPECT_EQ(printed(), "PERCENT:12.500000\n");
    lines.done(8, 8);
    EXPECT_EQ(printed(), "PERCENT:100.000000\n");
}

TEST_F(PuppetStringsTest, NoNewsIsNoLine) {
    PuppetStrings lines(m_pipe[1]);
    lines.done(1, 2);
    lines.done(1, 2);
    EXPECT_EQ(printed(), "PERCENT:50.000000\n");
}

TEST_F(PuppetStringsTest, ItIsNeverMoreThanAHundredPercent) {
    PuppetStrings lines(m_pipe[1]);
    lines.done(3, 2);
    EXPECT_EQ(printed(), "PERCENT:100.000000\n");
    lines.done(0, 0);
    EXPECT_EQ(printed(), "");
}

TEST_F(PuppetStringsTest, AReaderThatGoesAwayIsNoticedWithoutALine) {
    PuppetStrings lines(m_pipe[1]);
    EXPECT_FALSE(lines.readerIsGone());
    close(m_pipe[0]);
    EXPECT_TRUE(lines.readerIsGone());
    m_pipe[0] = -1;
}

TEST_F(PuppetStringsTest, AReaderThatGoesAwayIsNoticedByALine) {
    PuppetStrings lines(m_pipe[1]);
    close(m_pipe[0]);
    lines.done(1, 2);
    EXPECT_TRUE(lines.readerIsGone());
    m_pipe[0] = -1;
}

TEST_F(PuppetStringsTest, WithoutLinesNobodyIsGone) {
    PuppetStrings lines(std::nullopt);
    lines.done(1, 2);
    EXPECT_FALSE(lines.readerIsGone());
}

}  // namespace
