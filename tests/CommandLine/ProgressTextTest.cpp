#include "ProgressText.h"

#include <gtest/gtest.h>

#include <QLocale>
#include <cmath>
#include <limits>

namespace {

class ProgressTextTest : public testing::Test {
protected:
    ProgressTextTest() { QLocale::setDefault(QLocale::c()); }
    ~ProgressTextTest() override { QLocale::setDefault(QLocale::system()); }

    const ProgressState halfway{0.425, 1'900'000'000, 4'700'000'000, 11'200'000};
};

TEST_F(ProgressTextTest, APlainLineHasPercentageBytesSpeedAndTimeLeft) {
    EXPECT_EQ(ProgressText::plain(halfway), QStringLiteral("42 %, 1.9 GB of 4.7 GB, 11.2 MB/s, "
                                                           "4:10 left"));
}

TEST_F(ProgressTextTest, WhatIsNotKnownIsLeftOut) {
    EXPECT_EQ(ProgressText::plain({-1, 1'900'000, std::nullopt, 0}), QStringLiteral("1.9 MB"));
    EXPECT_EQ(ProgressText::plain({-1, 0, std::nullopt, 0}), QStringLiteral("Zero KB"));
    EXPECT_EQ(ProgressText::plain({0.5, 1'000'000, std::nullopt, 0}), QStringLiteral("50 %, 1 MB"));
}

TEST_F(ProgressTextTest, ThePercentageIsRoundedDown) {
    EXPECT_TRUE(ProgressText::plain({0.999, 1, 2, 0}).startsWith(QStringLiteral("99 %")));
    EXPECT_TRUE(ProgressText::plain({1.0, 1, 2, 0}).startsWith(QStringLiteral("100 %")));
    EXPECT_TRUE(ProgressText::plain({1.5, 1, 2, 0}).startsWith(QStringLiteral("100 %")));
}

TEST_F(ProgressTextTest, TheTimeLeftComesFromTheSizeOrElseFromTheFraction) {
    EXPECT_EQ(ProgressText::secondsLeft({0.5, 100, 300, 10}), 20);
    EXPECT_EQ(ProgressText::secondsLeft({0.25, 100, std::nullopt, 10}), 30);
    EXPECT_EQ(ProgressText::secondsLeft({-1, 100, std::nullopt, 10}), std::nullopt);
    EXPECT_EQ(ProgressText::secondsLeft({0, 100, std::nullopt, 10}), std::nullopt);
    EXPECT_EQ(ProgressText::secondsLeft({0.5, 100, 0, 10}), 10);
}

TEST_F(ProgressTextTest, ThereIsNoTimeLeftWithoutASpeed) {
    EXPECT_EQ(ProgressText::secondsLeft({0.5, 100, 300, 0}), std::nullopt);
    EXPECT_EQ(ProgressText::secondsLeft({0.5, 100, 300, -5}), std::nullopt);
    EXPECT_EQ(ProgressText::secondsLeft({0.5, 100, 300, std::nan("")}), std::nullopt);
    EXPECT_EQ(ProgressText::secondsLeft({0.5, 100, 300, std::numeric_limits<double>::infinity()}),
              std::nullopt);
}

TEST_F(ProgressTextTest, MoreBytesThanTheDiscHoldsLeaveNoTime) {
    EXPECT_EQ(ProgressText::secondsLeft({1, 400, 300, 10}), 0);
}

TEST_F(ProgressTextTest, ATimeOfDaysIsNotWorthSaying) {
    EXPECT_EQ(ProgressText::secondsLeft({0, 0, 50'000'000'000, 1}), std::nullopt);
}

TEST_F(ProgressTextTest, DurationsReadAsAClockDoes) {
    EXPECT_EQ(ProgressText::duration(0), QStringLiteral("0 s"));
    EXPECT_EQ(ProgressText::duration(59), QStringLiteral("59 s"));
    EXPECT_EQ(ProgressText::duration(60), QStringLiteral("1:00"));
    EXPECT_EQ(ProgressText::duration(3599), QStringLiteral("59:59"));
    EXPECT_EQ(ProgressText::duration(3723), QStringLiteral("1:02:03"));
}

TEST_F(ProgressTextTest, OnAWideTerminalABarStandsInFront) {
    EXPECT_EQ(ProgressText::forTerminal(halfway, 100),
              QStringLiteral("[===========                 ]  42 %  1.9 GB of 4.7 GB  11.2 MB/s  "
                             "4:10 left"));
}

TEST_F(ProgressTextTest, NoLineIsWiderThanTheTerminal) {
    for (int columns = -1; columns <= 120; ++columns) {
        EXPECT_LE(ProgressText::forTerminal(halfway, columns).size(), std::max(columns, 0));
        EXPECT_LE(ProgressText::forTerminal({-1, 5, std::nullopt, 1}, columns).size(),
                  std::max(columns, 0));
    }
}

TEST_F(ProgressTextTest, OnANarrowTerminalThePercentageStaysLongest) {
    EXPECT_EQ(ProgressText::forTerminal(halfway, 20), QStringLiteral("42 %"));
    EXPECT_EQ(ProgressText::forTerminal(halfway, 25), QStringLiteral("42 %  1.9 GB of 4.7 GB"));
}

TEST_F(ProgressTextTest, AnUnknownFractionHasNoBar) {
    EXPECT_EQ(ProgressText::forTerminal({-1, 2'000'000, std::nullopt, 1'000'000}, 100),
              QStringLiteral("2 MB  1 MB/s"));
}

}  // namespace
