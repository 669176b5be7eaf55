// Following the growing image: its size and the smoothed speed.
#include "RipperTest.h"

namespace {

using std::chrono::seconds;

class ISORipperSampleTest : public RipperTest {
protected:
    ISORipperSampleTest() {
        stub(hdiutil, ": > \"$out\"; : > \"$world/started\"; wait_for go; exit 1");
    }
    ~ISORipperSampleTest() override {
        release("go");
        EXPECT_TRUE(waitForEnd());
    }

    void begin() {
        start();
        ASSERT_TRUE(waitForFile("started"));
        changes->clear();
    }
    void grow(qint64 size) const { ASSERT_TRUE(QFile::resize(temporaryImage(), size)); }

    const ISORipper::Clock::time_point origin = ISORipper::Clock::now() + seconds(1000);
};

TEST(SmoothedSpeedTest, FromAStandstillTheSpeedIsTheInstantOne) {
    EXPECT_EQ(ISORipper::smoothedSpeed(0, 5000), 5000);
    EXPECT_EQ(ISORipper::smoothedSpeed(0, 0), 0);
}

TEST(SmoothedSpeedTest, LaterThreeTenthsAreNewAndSevenTenthsOld) {
    EXPECT_DOUBLE_EQ(ISORipper::smoothedSpeed(1000, 2000), 1300);
    EXPECT_DOUBLE_EQ(ISORipper::smoothedSpeed(1000, 0), 700);
    EXPECT_DOUBLE_EQ(ISORipper::smoothedSpeed(1000, -1000), 400);
}

TEST_F(ISORipperSampleTest, TheTimerTicksEverySecondWhileTheToolRuns) {
    begin();
    const auto* timer = ripper->findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(timer->isActive());
    EXPECT_FALSE(timer->isSingleShot());
    EXPECT_EQ(timer->interval(), 1000);
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ripper->findChild<QTimer*>(), nullptr);
}

TEST_F(ISORipperSampleTest, TheFirstSpeedIsTheInstantOneAndLaterOnesAreSmoothed) {
    begin();
    ripper->sample(origin);
    EXPECT_EQ(ripper->speedBytesPerSecond(), 0);
    grow(2000);
    ripper->sample(origin + seconds(1));
    EXPECT_DOUBLE_EQ(ripper->speedBytesPerSecond(), 2000);
    grow(8000);
    ripper->sample(origin + seconds(3));
    EXPECT_DOUBLE_EQ(ripper->speedBytesPerSecond(), 0.3 * 3000 + 0.7 * 2000);
    EXPECT_EQ(ripper->bytesWritten(), 8000);
    EXPECT_EQ(changes->names(), QStringList({"speedBytesPerSecond", "bytesWritten",
                                             "speedBytesPerSecond", "bytesWritten"}));
}

TEST_F(ISORipperSampleTest, TheFirstSampleCountsFromTheStartOfTheTool) {
    begin();
    grow(1000000);
    ripper->sample(origin);
    // Over the thousand seconds, less the moment that the start took.
    EXPECT_GE(ripper->speedBytesPerSecond(), 1000);
    EXPECT_LT(ripper->speedBytesPerSecond(), 2000);
}

TEST_F(ISORipperSampleTest, WithoutPassedTimeOnlyTheSizeIsPublished) {
    begin();
    ripper->sample(origin);
    grow(500);
    changes->clear();
    ripper->sample(origin);
    ripper->sample(origin - seconds(5));
    EXPECT_EQ(changes->all(), QStringList({"bytesWritten=500"}));
}

TEST_F(ISORipperSampleTest, ATickWithoutAnImageIsSkipped) {
    begin();
    ripper->sample(origin);
    ASSERT_TRUE(QFile::remove(temporaryImage()));
    changes->clear();
    ripper->sample(origin + seconds(1));
    EXPECT_EQ(changes->all(), QStringList());
}

TEST_F(ISORipperSampleTest, ProgressLinesDoNotTouchTheSpeed) {
    stub(hdiutil, "echo PERCENT:1; echo PERCENT:2; wait_for go; exit 1");
    start();
    ASSERT_TRUE(waitUntil([&] { return ripper->progress() == 0.02; }));
    EXPECT_EQ(changes->all(), QStringList({"isRunning=true", "progress=0.01", "progress=0.02"}));
}

TEST_F(ISORipperSampleTest, BeforeARipASampleDoesNothing) {
    ripper->sample(origin);
    EXPECT_EQ(changes->all(), QStringList());
}

}  // namespace
