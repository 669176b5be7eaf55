#include "DiscEjector.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>

#include "StubTools.h"
#include "TestFolder.h"

namespace {

using testing::ElementsAre;

using StubTools::diskutil;
using StubTools::drutil;

class DiscEjectorTest : public testing::Test {
protected:
    // A diskutil that fails so many times, then succeeds.
    void failing(int times) const {
        StubTools::write(folder, diskutil,
                         "echo noise; echo noise >&2\n[ $(grep -c ^diskutil '" +
                             (folder.toolRoot() + QStringLiteral("/log")).toUtf8() + "') -gt " +
                             QByteArray::number(times) + " ]");
    }

    // Ejects; sleeps become lines of the log.
    bool eject() {
        return DiscEjector::eject(QStringLiteral("disk4"), [this](double seconds) {
            const QString path = folder.toolRoot() + QStringLiteral("/log");
            const QByteArray before = TestFolder::read(path).value_or(QByteArray());
            folder.write(QStringLiteral("tools/log"),
                         before + "sleep " + QByteArray::number(seconds) + "\n");
        });
    }

    QStringList log() const { return StubTools::log(folder); }

    TestFolder folder;
};

constexpr const char16_t* attempt = u"diskutil eject /dev/disk4";
constexpr const char16_t* pause = u"sleep 1";
constexpr const char16_t* lastResort = u"drutil eject";

TEST_F(DiscEjectorTest, AFirstSuccessIsOneRunAndNoSleep) {
    failing(0);
    EXPECT_TRUE(eject());
    EXPECT_THAT(log(), ElementsAre(attempt));
}

TEST_F(DiscEjectorTest, TheSecondAttemptComesASecondLater) {
    failing(1);
    EXPECT_TRUE(eject());
    EXPECT_THAT(log(), ElementsAre(attempt, pause, attempt));
}

TEST_F(DiscEjectorTest, TheThirdAttemptComesAnotherSecondLater) {
    failing(2);
    EXPECT_TRUE(eject());
    EXPECT_THAT(log(), ElementsAre(attempt, pause, attempt, pause, attempt));
}

TEST_F(DiscEjectorTest, AfterThreeFailuresTheDriveIsAskedAtOnceWithoutADevice) {
    failing(3);
    StubTools::write(folder, drutil, "exit 0");
    EXPECT_TRUE(eject());
    EXPECT_THAT(log(), ElementsAre(attempt, pause, attempt, pause, attempt, lastResort));
}

TEST_F(DiscEjectorTest, TheDriveThatIsAskedAtLastIsTheOneWithTheDisc) {
    failing(3);
    StubTools::write(folder, drutil, "[ \"$SPINDRIFT_DRIVE\" = disk4 ]");
    EXPECT_TRUE(eject());
    folder.setEnvironment("SPINDRIFT_DRIVE", "disk5");
    EXPECT_TRUE(eject());
    EXPECT_EQ(qgetenv("SPINDRIFT_DRIVE"), "disk5");
}

TEST_F(DiscEjectorTest, FourFailuresAreAFailure) {
    failing(3);
    StubTools::write(folder, drutil, "exit 1");
    EXPECT_FALSE(eject());
    EXPECT_THAT(log(), ElementsAre(attempt, pause, attempt, pause, attempt, lastResort));
}

TEST_F(DiscEjectorTest, OnlyTheStatusCounts) {
    StubTools::write(folder, diskutil, "echo failed >&2; printf '\\377'; exit 0");
    EXPECT_TRUE(eject());
    StubTools::write(folder, diskutil, "echo ejected; exit 2");
    StubTools::write(folder, drutil, "echo ejected; exit 2");
    EXPECT_FALSE(eject());
}

TEST_F(DiscEjectorTest, AToolThatIsKilledHasFailed) {
    StubTools::write(folder, diskutil, "kill -9 $$");
    StubTools::write(folder, drutil, "kill -15 $$");
    EXPECT_FALSE(eject());
}

TEST_F(DiscEjectorTest, AToolThatCannotBeStartedIsAFailedAttempt) {
    folder.write(QStringLiteral("tools/usr/sbin/diskutil"), "not executable");
    StubTools::write(folder, drutil, "exit 0");
    EXPECT_TRUE(eject());
    EXPECT_THAT(log(), ElementsAre(pause, pause, lastResort));
}

TEST_F(DiscEjectorTest, WithoutAnyToolThatStartsItIsAFailure) {
    folder.write(QStringLiteral("tools/usr/sbin/diskutil"), "not executable");
    folder.write(QStringLiteral("tools/usr/bin/drutil"), "not executable");
    EXPECT_FALSE(eject());
}

TEST_F(DiscEjectorTest, TheUsualWayToWaitTakesTheWholeSecond) {
    failing(1);
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(DiscEjector::eject(QStringLiteral("disk4")));
    EXPECT_GE(timer.nsecsElapsed(), 1'000'000'000);
    EXPECT_THAT(log(), ElementsAre(attempt, attempt));
}

TEST_F(DiscEjectorTest, WithoutAnotherWayToWaitItSucceedsJustTheSame) {
    failing(0);
    EXPECT_TRUE(DiscEjector::eject(QStringLiteral("disk4")));
    EXPECT_THAT(log(), ElementsAre(attempt));
}

}  // namespace
