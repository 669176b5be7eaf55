#include "BackgroundThread.h"

#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <memory>

using BackgroundThread::Life;
using BackgroundThread::Priority;

TEST(BackgroundThreadTest, ItTakesNoSignalsAndItsStarterGoesOnTakingThem) {
    const auto mask = [] {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        return sigismember(&blocked, SIGINT) + sigismember(&blocked, SIGTERM) +
               sigismember(&blocked, SIGHUP) + sigismember(&blocked, SIGCHLD);
    };
    const auto inside = std::make_shared<std::promise<int>>();
    ASSERT_EQ(BackgroundThread::start(Priority::Normal, [=] { inside->set_value(mask()); }), 0);
    EXPECT_EQ(inside->get_future().get(), 4);
    EXPECT_EQ(mask(), 0);
}

TEST(BackgroundThreadTest, OnlyPassingWorkIsWaitedFor) {
    const auto release = std::make_shared<std::promise<void>>();
    const auto released = release->get_future().share();
    ASSERT_EQ(BackgroundThread::start(
                  Priority::Normal, [released] { released.wait(); }, Life::Unawaited),
              0);
    EXPECT_TRUE(BackgroundThread::waitForPassing(std::chrono::minutes(1)));
    ASSERT_EQ(BackgroundThread::start(Priority::Normal, [released] { released.wait(); }), 0);
    EXPECT_FALSE(BackgroundThread::waitForPassing(std::chrono::milliseconds(0)));
    release->set_value();
    EXPECT_TRUE(BackgroundThread::waitForPassing(std::chrono::minutes(1)));
}
