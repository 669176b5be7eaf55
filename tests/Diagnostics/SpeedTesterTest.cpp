#include "SpeedTester.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <QFile>
#include <QRegularExpression>
#include <QTimer>
#include <chrono>

#include "RemovedAtExit.h"
#include "StubTools.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

class SpeedTesterTest : public testing::Test {
protected:
    static constexpr const char* hdiutil = "/usr/bin/hdiutil";

    SpeedTesterTest() {
        StubTools::write(folder, QStringLiteral("/usr/bin/pkill"), "exec /usr/bin/pkill \"$@\"");
        tester = std::make_unique<SpeedTester>();
        const auto note = [this](const char* name) {
            return [this, name] { changes.append(QString::fromLatin1(name)); };
        };
        QObject::connect(tester.get(), &SpeedTester::isRunningChanged, note("isRunning"));
        QObject::connect(tester.get(), &SpeedTester::progressChanged, [this] {
            changes.append(u"progress=" + QString::number(tester->progress()));
        });
        QObject::connect(tester.get(), &SpeedTester::bytesReadChanged, note("bytesRead"));
        QObject::connect(tester.get(), &SpeedTester::resultChanged, note("result"));
        QObject::connect(tester.get(), &SpeedTester::errorChanged, note("error"));
    }

    // In the script $out is the image to write; wait_for NAME waits for release(NAME).
    void stub(const QByteArray& body) const {
        StubTools::write(folder, QString::fromLatin1(hdiutil),
                         "out=\"$8\"; world='" + folder.path().toUtf8() +
                             "'\nwait_for() { while [ ! -e \"$world/$1\" ] && [ -d \"$world\" ]; "
                             "do /bin/sleep 0.01; done; }\n" +
                             body);
    }
    void release(const char* name) const { folder.write(QString::fromLatin1(name), "go"); }
    bool waitForFile(const char* name) const {
        return waitUntil([&] { return QFile::exists(folder.path(QString::fromLatin1(name))); });
    }
    pid_t pidIn(const char* name) const {
        const auto text = TestFolder::read(folder.path(QString::fromLatin1(name)));
        return text && text->endsWith('\n') ? text->trimmed().toInt() : 0;
    }
    void start(std::optional<qint64> size = std::nullopt) {
        tester->start(QStringLiteral("disk4s1"), drive, DiscKind::dvd, size);
    }
    bool waitForEnd() {
        return waitUntil([&] { return !tester->isRunning(); });
    }
    void run(const QByteArray& body, std::optional<qint64> size = std::nullopt) {
        stub(body);
        start(size);
        ASSERT_TRUE(waitForEnd());
    }
    QStringList temporaryFiles() const { return TestFolder::list(folder.temporary()); }

    TestFolder folder;
    const DriveIdentity drive{QStringLiteral("ASUS"), QStringLiteral("BW-16D1HT"),
                              QStringLiteral("3.10")};
    std::unique_ptr<SpeedTester> tester;
    QStringList changes;
};

TEST_F(SpeedTesterTest, ANewTesterIsIdle) {
    EXPECT_FALSE(tester->isRunning());
    EXPECT_EQ(tester->progress(), 0);
    EXPECT_EQ(tester->bytesRead(), 0);
    EXPECT_EQ(tester->result(), std::nullopt);
    EXPECT_EQ(tester->error(), std::nullopt);
}

TEST_F(SpeedTesterTest, TheImagingToolGetsItsArgumentsInOrder) {
    run("printf image > \"$out\"");
    const QRegularExpression expected(
        u"^hdiutil create -srcdevice /dev/disk4s1 -format UDTO -puppetstrings -o " +
        QRegularExpression::escape(folder.temporary()) +
        u"spindrift-speedtest-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.cdr$");
    const QStringList log = StubTools::log(folder);
    ASSERT_EQ(log.size(), 1);
    EXPECT_TRUE(expected.match(log.first()).hasMatch()) << log.first().toStdString();
}

TEST_F(SpeedTesterTest, AGoodTestPublishesItsResult) {
    const QDateTime before = QDateTime::currentDateTimeUtc();
    run("printf image > \"$out\"; echo PERCENT:50", 4700372992);
    EXPECT_EQ(changes,
              QStringList({"isRunning", "progress=0.5", "isRunning", "bytesRead", "result"}));
    ASSERT_TRUE(tester->result());
    const auto& result = *tester->result();
    EXPECT_FALSE(result.id.isNull());
    EXPECT_GE(result.date, before);
    EXPECT_EQ(result.driveKey, QStringLiteral("ASUS|BW-16D1HT|3.10"));
    EXPECT_EQ(result.driveModelString, drive.modelString());
    EXPECT_EQ(result.discKind, QStringLiteral("DVD"));
    EXPECT_EQ(result.discSizeBytes, 4700372992);
    EXPECT_GT(result.averageBytesPerSecond, 0);
    EXPECT_EQ(result.source, SpeedTestResult::Source::speedTest);
    EXPECT_EQ(tester->bytesRead(), 5);
    EXPECT_EQ(tester->error(), std::nullopt);
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(SpeedTesterTest, TheAverageIsTheImagesSizeOverTheTimeFromTheStartOfTheTool) {
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;
    stub(
        "printf part > \"$out\"; : > \"$world/started\"; wait_for go; "
        "head -c 1000000 /dev/zero > \"$out\"");
    const auto beforeStart = Clock::now();
    start(4700372992);
    const auto afterStart = Clock::now();
    ASSERT_TRUE(waitForFile("started"));
    const auto started = Clock::now();
    tester->sample();
    // Long beside what is still to come, so that a time without it would be seen.
    ASSERT_TRUE(
        waitUntil([&] { return Clock::now() - afterStart > 10 * (started - beforeStart); }));
    const auto beforeEnd = Clock::now();
    release("go");
    ASSERT_TRUE(waitForEnd());
    const Seconds most = Clock::now() - beforeStart;
    const Seconds least = beforeEnd - afterStart;
    ASSERT_TRUE(tester->result());
    EXPECT_GE(tester->result()->averageBytesPerSecond, 1000000 / most.count());
    EXPECT_LE(tester->result()->averageBytesPerSecond, 1000000 / least.count());
}

TEST_F(SpeedTesterTest, WithoutADiscSizeTheBytesReadCount) {
    run("printf image > \"$out\"");
    ASSERT_TRUE(tester->result());
    EXPECT_EQ(tester->result()->discSizeBytes, 5);
}

TEST_F(SpeedTesterTest, TheImageIsStillThereWhenTheResultIsPublishedAndGoesLast) {
    bool there = false;
    QObject::connect(tester.get(), &SpeedTester::resultChanged,
                     [&] { there = there || !temporaryFiles().isEmpty(); });
    run("printf image > \"$out\"");
    EXPECT_TRUE(there);
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST(AverageSpeedTest, ItIsTheBytesDividedByTheSeconds) {
    EXPECT_EQ(SpeedTester::averageSpeed(700000000, 350), 2000000);
}

TEST(AverageSpeedTest, WithoutPassedTimeThereIsNone) {
    EXPECT_EQ(SpeedTester::averageSpeed(1, 0), std::nullopt);
    EXPECT_EQ(SpeedTester::averageSpeed(1, -1), std::nullopt);
}

TEST_F(SpeedTesterTest, PercentagesBecomeFractionsAndNegativeOnesUnknown) {
    run("printf 'PERCENT:-1\\nPERCENT: 42.5\\nPERCENT:150\\nPERCENT:\\nPERCENT:abc\\nx\\n'; exit "
        "1");
    EXPECT_EQ(changes.filter(QStringLiteral("progress")),
              QStringList({"progress=-1", "progress=0.425", "progress=1"}));
}

TEST_F(SpeedTesterTest, ALineInTwoReadsCountsOnceAndOneWithoutEndNever) {
    stub("printf PERC; wait_for second; printf 'ENT:25\\nPERCENT:75'; exit 1");
    start();
    release("second");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes.filter(QStringLiteral("progress")), QStringList({"progress=0.25"}));
}

TEST_F(SpeedTesterTest, OutputThatIsNotUtf8IsDropped) {
    run("printf 'PERCENT:10\\n\\377\\n'; exit 1");
    EXPECT_EQ(changes.filter(QStringLiteral("progress")), QStringList());
}

TEST_F(SpeedTesterTest, AToolThatFailsGivesItsStatusAndItsImageGoes) {
    run("printf part > \"$out\"; echo Permission denied >&2; exit 1");
    EXPECT_EQ(tester->error(), QStringLiteral("Speed test failed (exit code 1)."));
    EXPECT_EQ(changes, QStringList({"isRunning", "isRunning", "error"}));
    EXPECT_EQ(tester->result(), std::nullopt);
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(SpeedTesterTest, OnlyADiscThatSomebodyElseReadsHasAReasonBesideTheError) {
    run("exit 75");
    EXPECT_EQ(tester->error(), QStringLiteral("Speed test failed (exit code 75)."));
    EXPECT_TRUE(tester->reason().has_value());
    run("exit 1");
    EXPECT_EQ(tester->reason(), std::nullopt);
}

TEST_F(SpeedTesterTest, AToolThatIsKilledGivesTheSignalsNumber) {
    run("kill -9 $$");
    EXPECT_EQ(tester->error(), QStringLiteral("Speed test failed (exit code 9)."));
}

TEST_F(SpeedTesterTest, SuccessWithoutAnImageIsAFailureWithStatusZero) {
    run("exit 0");
    EXPECT_EQ(tester->error(), QStringLiteral("Speed test failed (exit code 0)."));
}

TEST_F(SpeedTesterTest, AToolThatCannotBeStartedGivesTheReason) {
    stub("");
    QFile::setPermissions(folder.toolRoot() + QLatin1String(hdiutil), QFile::ReadOwner);
    start();
    EXPECT_EQ(tester->error(), QStringLiteral("Could not start speed test: Permission denied"));
    EXPECT_EQ(changes, QStringList({"error"}));
    EXPECT_EQ(tester->findChild<QTimer*>(), nullptr);
}

TEST_F(SpeedTesterTest, WhatTheToolSaysOnStandardErrorIsNowhere) {
    // It would block here if it were a pipe that nobody reads.
    testing::internal::CaptureStderr();
    run("head -c 10000000 /dev/zero >&2; printf image > \"$out\"");
    EXPECT_EQ(testing::internal::GetCapturedStderr().size(), 0U);
    EXPECT_TRUE(tester->result());
}

TEST_F(SpeedTesterTest, CancellingLeavesNoResultNoErrorAndNoFile) {
    stub("printf part > \"$out\"; echo $$ > \"$world/pid\"; exec sleep 1000");
    start();
    ASSERT_TRUE(waitUntil([&] { return pidIn("pid") > 0; }));
    tester->cancel();
    EXPECT_TRUE(tester->isRunning());
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes, QStringList({"isRunning", "isRunning"}));
    EXPECT_EQ(tester->result(), std::nullopt);
    EXPECT_EQ(tester->error(), std::nullopt);
    EXPECT_EQ(temporaryFiles(), QStringList());
    // Nobody waits for pkill.
    EXPECT_TRUE(waitUntil([&] {
        return StubTools::log(folder).last() == u"pkill -P " + QString::number(pidIn("pid"));
    }));
}

TEST_F(SpeedTesterTest, ACancelledToolThatSucceedsAllTheSameGivesNoResult) {
    stub("trap '' TERM\n: > \"$world/started\"; wait_for go; printf image > \"$out\"");
    start();
    ASSERT_TRUE(waitForFile("started"));
    tester->cancel();
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(tester->result(), std::nullopt);
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(SpeedTesterTest, CancellingNothingDoesNothing) {
    tester->cancel();
    EXPECT_EQ(changes, QStringList());
    EXPECT_EQ(StubTools::log(folder), QStringList());
    run("printf image > \"$out\"");
    EXPECT_TRUE(tester->result());
}

TEST_F(SpeedTesterTest, ANewTestClearsTheOldOutcomeBeforeTheToolStarts) {
    run("exit 3");
    EXPECT_TRUE(tester->error());
    run("printf image > \"$out\"; echo PERCENT:50");
    EXPECT_EQ(tester->error(), std::nullopt);
    ASSERT_TRUE(tester->result());
    changes.clear();
    stub("wait_for go");
    start();
    EXPECT_EQ(changes, QStringList({"progress=0", "bytesRead", "result", "isRunning"}));
    release("go");
    ASSERT_TRUE(waitForEnd());
}

TEST_F(SpeedTesterTest, TheSampleFollowsTheGrowingImage) {
    stub(
        ": > \"$world/started\"; wait_for first; printf 1234 > \"$out\"; : > \"$world/written\"; "
        "wait_for go; exit 1");
    start();
    ASSERT_TRUE(waitForFile("started"));
    const auto* timer = tester->findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(timer->interval(), 1000);
    changes.clear();
    tester->sample();
    EXPECT_EQ(changes, QStringList());
    release("first");
    ASSERT_TRUE(waitForFile("written"));
    tester->sample();
    EXPECT_EQ(tester->bytesRead(), 4);
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(tester->findChild<QTimer*>(), nullptr);
}

TEST_F(SpeedTesterTest, AGrandchildThatHoldsThePipeDoesNotHoldUpTheEnd) {
    run("( wait_for go ) &\nprintf image > \"$out\"");
    EXPECT_TRUE(tester->result());
    release("go");
}

TEST_F(SpeedTesterTest, ADiscardedTesterDropsWhatComesBackAndTheImageGoesAtTheToolsEnd) {
    stub("printf image > \"$out\"; : > \"$world/started\"; wait_for go; echo PERCENT:50");
    start();
    ASSERT_TRUE(waitForFile("started"));
    tester.reset();
    changes.clear();
    EXPECT_EQ(temporaryFiles().size(), 1);
    release("go");
    EXPECT_TRUE(waitUntil([&] { return temporaryFiles().isEmpty(); }));
    EXPECT_EQ(changes, QStringList());
}

TEST_F(SpeedTesterTest, TheImageOfATestWhoseToolOutlivesItsTesterGoesWithTheProgram) {
    stub("trap '' TERM; printf part > \"$out\"; echo $$ > \"$world/pid\"; wait_for end");
    start();
    ASSERT_TRUE(waitUntil([&] { return pidIn("pid") != 0; }));
    tester->cancel();
    tester.reset();
    ASSERT_EQ(temporaryFiles().size(), 1) << "the tool lives";
    RemovedAtExit::removeAll();
    EXPECT_EQ(temporaryFiles(), QStringList());
    release("end");
    EXPECT_TRUE(waitUntil([&] { return ::kill(pidIn("pid"), 0) != 0; }));
}

}  // namespace
