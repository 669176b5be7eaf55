#include "Interruption.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QStringList>
#include <csignal>

#include "Waiting.h"

namespace {

TEST(InterruptionTest, EachEndingSignalIsToldOnTheMainThread) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Interruption interruption;
        Interruption::begin();
        int told = 0;
        QObject::connect(&interruption, &Interruption::interrupted, [&] { ++told; });
        EXPECT_FALSE(Interruption::happened());
        ::raise(number);
        EXPECT_TRUE(Interruption::happened());
        EXPECT_EQ(told, 0);
        EXPECT_TRUE(waitUntil([&] { return told == 1; }));
    }
}

TEST(InterruptionTest, BeforeThereIsAnythingToUndoASignalEndsTheProcessAtOnce) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                Interruption interruption;
                ::raise(number);
            },
            testing::ExitedWithCode(130), "");
    }
}

TEST(InterruptionTest, ASecondSignalIsToldAgain) {
    Interruption interruption;
    Interruption::begin();
    int told = 0;
    QObject::connect(&interruption, &Interruption::interrupted, [&] { ++told; });
    ::raise(SIGINT);
    EXPECT_TRUE(waitUntil([&] { return told == 1; }));
    ::raise(SIGINT);
    EXPECT_TRUE(waitUntil([&] { return told == 2; }));
}

TEST(InterruptionTest, AnInterruptionIsToldBeforeWhatAnObjectIsToLearnAfterIt) {
    Interruption interruption;
    Interruption::begin();
    QObject object;
    interruption.goBeforeEventsOf(&object);
    QStringList order;
    QObject::connect(&interruption, &Interruption::interrupted,
                     [&] { order << QStringLiteral("interrupted"); });
    QMetaObject::invokeMethod(
        &object, [&] { order << QStringLiteral("tool ended"); }, Qt::QueuedConnection);
    ::raise(SIGINT);
    QCoreApplication::sendPostedEvents(&object);
    EXPECT_EQ(order, (QStringList{QStringLiteral("interrupted"), QStringLiteral("tool ended")}));
}

TEST(InterruptionTest, ASignalThatTheParentIgnoresStaysIgnored) {
    ::signal(SIGHUP, SIG_IGN);
    {
        Interruption interruption;
        ::raise(SIGHUP);
        EXPECT_FALSE(Interruption::happened());
    }
    ::signal(SIGHUP, SIG_DFL);
}

}  // namespace
