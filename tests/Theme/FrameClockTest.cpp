#include "FrameClock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>
#include <QWidget>

#include "Waiting.h"

namespace {

class FrameClockTest : public testing::Test {
protected:
    FrameClockTest() { window.resize(80, 40); }
    ~FrameClockTest() override {
        FrameClock::setTimeSource({});
        FrameClock::setReducedMotion(false);
    }
    void showAll() {
        window.show();
        ASSERT_TRUE(waitUntil([this] { return clock.isRunning(); }));
    }

    QWidget window;
    QWidget widget{&window};
    FrameClock clock{&widget};
};

TEST_F(FrameClockTest, TicksWhileSomethingIsWantedAndSeen) {
    int frames = 0;
    QObject::connect(&clock, &FrameClock::frame, [&frames] { ++frames; });
    clock.setWanted(true);
    EXPECT_FALSE(clock.isRunning()) << "not shown yet";
    showAll();
    EXPECT_TRUE(waitUntil([&] { return frames >= 3; }));
    clock.setWanted(false);
    EXPECT_FALSE(clock.isRunning());
}

TEST_F(FrameClockTest, AllClocksShareOneTimerOfThirtyFramesASecond) {
    const auto running = [] {
        QList<QTimer*> timers = QCoreApplication::instance()->findChildren<QTimer*>();
        timers.removeIf([](const QTimer* timer) { return !timer->isActive(); });
        return timers;
    };
    FrameClock other(&widget);
    other.setWanted(true);
    clock.setWanted(true);
    EXPECT_TRUE(running().isEmpty());
    showAll();
    ASSERT_EQ(running().size(), 1);
    EXPECT_NEAR(running()[0]->interval(), 1000.0 / 30, 1);
    EXPECT_EQ(running()[0]->timerType(), Qt::PreciseTimer);
    other.setWanted(false);
    clock.setWanted(false);
    EXPECT_TRUE(running().isEmpty()) << "nothing wakes a program that stands still";
}

TEST_F(FrameClockTest, NothingWantedMeansNoTicks) {
    window.show();
    EXPECT_FALSE(clock.isRunning());
}

TEST_F(FrameClockTest, StopsWhileTheWidgetOrItsWindowIsHidden) {
    clock.setWanted(true);
    showAll();
    widget.hide();
    EXPECT_FALSE(clock.isRunning());
    widget.show();
    EXPECT_TRUE(clock.isRunning());
    window.hide();
    EXPECT_FALSE(clock.isRunning());
    showAll();
}

TEST_F(FrameClockTest, StopsWhileTheWindowIsMinimised) {
    clock.setWanted(true);
    showAll();
    window.setWindowState(Qt::WindowMinimized);
    EXPECT_TRUE(waitUntil([this] { return !clock.isRunning(); }));
    window.setWindowState(Qt::WindowNoState);
    EXPECT_TRUE(waitUntil([this] { return clock.isRunning(); }));
}

TEST_F(FrameClockTest, StopsWhileTheWidgetOrWhatHoldsItIsDisabled) {
    clock.setWanted(true);
    showAll();
    widget.setEnabled(false);
    EXPECT_FALSE(clock.isRunning());
    widget.setEnabled(true);
    EXPECT_TRUE(clock.isRunning());
    window.setEnabled(false);
    EXPECT_FALSE(clock.isRunning());
}

TEST_F(FrameClockTest, FollowsItsWidgetToAnotherWindow) {
    QWidget other;
    other.resize(80, 40);
    clock.setWanted(true);
    showAll();
    widget.setParent(&other);
    widget.show();
    EXPECT_FALSE(clock.isRunning()) << "the other window is not shown";
    other.show();
    EXPECT_TRUE(waitUntil([this] { return clock.isRunning(); }));
    window.hide();
    EXPECT_TRUE(clock.isRunning());
    other.hide();
    EXPECT_FALSE(clock.isRunning());
    widget.setParent(&window);
}

TEST_F(FrameClockTest, ReducedMotionStopsEveryClockAtOnceAndTellsThem) {
    int told = 0;
    QObject::connect(&clock, &FrameClock::motionChanged, [&told] { ++told; });
    clock.setWanted(true);
    showAll();
    FrameClock::setReducedMotion(true);
    EXPECT_FALSE(clock.isRunning());
    EXPECT_EQ(told, 1);
    FrameClock::setReducedMotion(true);
    EXPECT_EQ(told, 1);
    FrameClock::setReducedMotion(false);
    EXPECT_TRUE(clock.isRunning());
    EXPECT_EQ(told, 2);
}

TEST_F(FrameClockTest, AFrameMayEndAnotherClock) {
    auto* doomed = new QWidget(&window);
    auto* doomedClock = new FrameClock(doomed);
    doomedClock->setWanted(true);
    clock.setWanted(true);
    QObject::connect(&clock, &FrameClock::frame, [&doomed] {
        delete doomed;
        doomed = nullptr;
    });
    showAll();
    EXPECT_TRUE(waitUntil([&] { return doomed == nullptr; }));
    EXPECT_TRUE(clock.isRunning());
}

TEST_F(FrameClockTest, CountsSecondsSinceItWasMadeOrRestarted) {
    double now = 10;
    FrameClock::setTimeSource([&now] { return now; });
    clock.restart();
    EXPECT_DOUBLE_EQ(clock.seconds(), 0);
    now = 12.5;
    EXPECT_DOUBLE_EQ(clock.seconds(), 2.5);
    clock.restart();
    EXPECT_DOUBLE_EQ(clock.seconds(), 0);
    FrameClock::setTimeSource({});
}

TEST_F(FrameClockTest, TimeGoesOnWhileTheClockStandsStill) {
    double now = 0;
    FrameClock::setTimeSource([&now] { return now; });
    clock.restart();
    clock.setWanted(false);
    now = 3;
    EXPECT_DOUBLE_EQ(clock.seconds(), 3);
    FrameClock::setTimeSource({});
}

}  // namespace
