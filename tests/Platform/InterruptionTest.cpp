#include "Interruption.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QStringList>
#include <csignal>
#include <cstdio>

#include "RemovedAtExit.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

constexpr Interruption::Ending ending = {[](int number) { return 100 + number; },
                                         [] { std::fputs("last words", stderr); }};

// Until a signal that ends the process; those that are told come back from it.
[[noreturn]] void waitForTheEnd() {
    while (true) {
        ::pause();
    }
}

TEST(InterruptionTest, EachEndingSignalIsToldOnTheMainThread) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Interruption interruption(ending);
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
                Interruption interruption(ending);
                ::raise(number);
            },
            testing::ExitedWithCode(100 + number), "");
    }
}

TEST(InterruptionTest, ASecondSignalEndsTheProcessWithItsFiles) {
    const TestFolder folder;
    const QString path = folder.write("image", "half");
    EXPECT_EXIT(
        {
            const RemovedAtExit held(path);
            Interruption interruption(ending);
            Interruption::begin();
            ::raise(SIGINT);
            ::raise(SIGTERM);
            waitForTheEnd();
        },
        testing::ExitedWithCode(100 + SIGTERM), "last words");
    EXPECT_FALSE(QFile::exists(path));
}

TEST(InterruptionTest, AMainThreadThatDoesNotEndTheProcessIsNotWaitedForLong) {
    EXPECT_EXIT(
        {
            Interruption interruption(ending);
            Interruption::begin();
            ::raise(SIGINT);
            waitForTheEnd();
        },
        testing::ExitedWithCode(100 + SIGINT), "last words");
}

TEST(InterruptionTest, OnceAllIsDoneSignalsChangeNothing) {
    Interruption interruption(ending);
    Interruption::begin();
    int told = 0;
    QObject::connect(&interruption, &Interruption::interrupted, [&] { ++told; });
    interruption.end();
    ::raise(SIGINT);
    EXPECT_TRUE(waitUntil([&] { return told == 1; }));
    ::raise(SIGINT);
    EXPECT_TRUE(waitUntil([&] { return told == 2; }));
}

TEST(InterruptionTest, AnInterruptionIsToldBeforeWhatAnObjectIsToLearnAfterIt) {
    Interruption interruption(ending);
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
        Interruption interruption(ending);
        ::raise(SIGHUP);
        EXPECT_FALSE(Interruption::happened());
    }
    ::signal(SIGHUP, SIG_DFL);
}

}  // namespace
