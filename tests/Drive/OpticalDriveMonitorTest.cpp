#include "OpticalDriveMonitor.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QPointer>
#include <QTimerEvent>

#include "StubTools.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using StubTools::diskutil;
using StubTools::drutil;

constexpr const char* head =
    " Vendor   Product           Rev \n ACME     Test Drive        1.0 \n\n";

const DriveIdentity acme{QStringLiteral("ACME"), QStringLiteral("Test Drive"),
                         QStringLiteral("1.0")};

class OpticalDriveMonitorTest : public testing::Test {
protected:
    static QByteArray print(const QByteArray& text) { return "cat <<'END'\n" + text + "\nEND\n"; }

    // A drive tool that succeeds with this below the drive table.
    void report(const QByteArray& text) const {
        StubTools::write(folder, drutil, print(head + text));
    }

    void fail(const QByteArray& error) const {
        StubTools::write(folder, drutil, "printf '" + error + "' >&2; exit 1");
    }

    // A disc with this name and two slices; its size tells which device was asked.
    void disc(const QByteArray& name, const QByteArray& type = "CD-ROM") const {
        report(" Type: " + type + "    Name: /dev/disk4");
        StubTools::write(
            folder, diskutil,
            "case \"$*\" in\n'info -plist /dev/disk4') size=400;;\n'info -plist /dev/disk4s2') "
            "size=402;;\n'list /dev/disk4') echo ' 1: a disk4s1'; echo ' 2: b disk4s2'; exit;;\n"
            "*) exit 1;;\nesac\necho \"<plist><dict><key>VolumeName</key><string>" +
                name + "</string><key>TotalSize</key><integer>$size</integer></dict></plist>\"");
    }

    // Notes every signal with the values that can be read at that moment.
    void watch(OpticalDriveMonitor& monitor) {
        const auto note = [this, &monitor](const char* signal) {
            changes << QLatin1String(signal) + QLatin1Char(' ') + state(monitor);
        };
        QObject::connect(&monitor, &OpticalDriveMonitor::objectWillChange,
                         [note] { note("will"); });
        QObject::connect(&monitor, &OpticalDriveMonitor::discChanged, [note] { note("disc"); });
        QObject::connect(&monitor, &OpticalDriveMonitor::driveDetectedChanged,
                         [note] { note("detected"); });
        QObject::connect(&monitor, &OpticalDriveMonitor::driveIdentityChanged,
                         [note] { note("identity"); });
        QObject::connect(&monitor, &OpticalDriveMonitor::lastErrorChanged,
                         [note] { note("error"); });
    }

    // disc / detected / identity / error, in short.
    static QString state(const OpticalDriveMonitor& monitor) {
        const QString none = QStringLiteral("-");
        return QStringList{monitor.disc() ? monitor.disc()->displayName() : none,
                           monitor.driveDetected() ? QStringLiteral("yes") : QStringLiteral("no"),
                           monitor.driveIdentity() ? monitor.driveIdentity()->vendor : none,
                           monitor.lastError().value_or(none)}
            .join(QLatin1Char('/'));
    }

    static void fire(QTimer* timer) {
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
    }

    QStringList takeChanges() { return std::exchange(changes, {}); }
    QStringList log() const { return StubTools::log(folder); }

    TestFolder folder;
    QStringList changes;
};

TEST_F(OpticalDriveMonitorTest, ANewMonitorKnowsNothingAndAsksNobody) {
    disc("NAME");
    const OpticalDriveMonitor monitor;
    EXPECT_EQ(state(monitor), QStringLiteral("-/no/-/-"));
    EXPECT_EQ(monitor.findChild<QTimer*>(), nullptr);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(OpticalDriveMonitorTest, ADiscIsPublishedWithAllItsFields) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(monitor.disc(),
              (OpticalDisc{QStringLiteral("disk4"), QStringLiteral("CD-ROM"), DiscKind::cd,
                           QStringLiteral("NAME"), 402, QStringLiteral("disk4s2")}));
    EXPECT_TRUE(monitor.driveDetected());
    EXPECT_EQ(monitor.driveIdentity(), acme);
    EXPECT_EQ(monitor.lastError(), std::nullopt);
}

TEST_F(OpticalDriveMonitorTest, APollRunsTheToolsInOrder) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_THAT(log(),
                ElementsAre(u"drutil status", u"diskutil info -plist /dev/disk4",
                            u"diskutil list /dev/disk4", u"diskutil info -plist /dev/disk4s2"));
}

TEST_F(OpticalDriveMonitorTest, ADiscWithoutANameIsAskedForItsVolumesToo) {
    disc("");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_THAT(log(), ElementsAre(u"drutil status", u"diskutil info -plist /dev/disk4",
                                   u"diskutil list -plist /dev/disk4", u"diskutil list /dev/disk4",
                                   u"diskutil info -plist /dev/disk4s2"));
    EXPECT_EQ(monitor.disc()->volumeName, std::nullopt);
    EXPECT_EQ(monitor.disc()->imageSourceBSDName, QStringLiteral("disk4s2"));
}

TEST_F(OpticalDriveMonitorTest, AnAudioDiscInAnyLetterCaseIsImagedFromItsWholeDevice) {
    for (const char* name : {"Audio CD", "audio cd", "AUDIO CD", "aUDIO cd"}) {
        disc(name);
        OpticalDriveMonitor monitor;
        monitor.poll();
        ASSERT_TRUE(monitor.disc()) << name;
        EXPECT_EQ(monitor.disc()->imageSourceBSDName, QStringLiteral("disk4")) << name;
        EXPECT_EQ(monitor.disc()->totalBytes, 400) << name;
        EXPECT_EQ(monitor.disc()->volumeName, QLatin1String(name));
    }
}

TEST_F(OpticalDriveMonitorTest, ANameThatOnlyContainsAudioCdIsDataAsAnyOther) {
    for (const char* name : {"Audio CD 1", "My Audio CD", "AudioCD", "Audio CD "}) {
        disc(name);
        OpticalDriveMonitor monitor;
        monitor.poll();
        EXPECT_EQ(monitor.disc()->imageSourceBSDName, QStringLiteral("disk4s2")) << name;
    }
}

TEST_F(OpticalDriveMonitorTest, ADiscWhoseQueriesFailIsPublishedAllTheSame) {
    disc("NAME", "DVD+R DL");
    StubTools::write(folder, diskutil, "exit 1");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(monitor.disc(),
              (OpticalDisc{QStringLiteral("disk4"), QStringLiteral("DVD+R DL"), DiscKind::dvd,
                           std::nullopt, std::nullopt, QStringLiteral("disk4")}));
}

TEST_F(OpticalDriveMonitorTest, AReportWithoutAStatusLineHasADriveAndNoDisc) {
    report(" Type: No Media Inserted");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(state(monitor), QStringLiteral("-/yes/ACME/-"));
    EXPECT_THAT(log(), ElementsAre(u"drutil status"));
}

TEST_F(OpticalDriveMonitorTest, AReportWithoutATableHasADriveWithoutIdentity) {
    report("");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(monitor.driveIdentity(), acme);
    StubTools::write(folder, drutil, "true");
    monitor.poll();
    EXPECT_EQ(state(monitor), QStringLiteral("-/yes/-/-"));
}

TEST_F(OpticalDriveMonitorTest, AFailureWithoutWordsIsNoDriveAndKeepsTheIdentity) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    monitor.poll();
    fail("");
    monitor.poll();
    EXPECT_EQ(state(monitor), QStringLiteral("-/no/ACME/No optical drive found."));
}

TEST_F(OpticalDriveMonitorTest, AFailureWithWordsIsToldToTheCharacter) {
    fail(" the bus\\n is busy \\n");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(monitor.lastError(), QStringLiteral(" the bus\n is busy \n"));
    fail("\\n");
    monitor.poll();
    EXPECT_EQ(monitor.lastError(), QStringLiteral("\n"));
}

TEST_F(OpticalDriveMonitorTest, AFailureWhoseWordsAreNoUtf8IsOneWithoutWords) {
    fail("\\377");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(monitor.lastError(), QStringLiteral("No optical drive found."));
}

TEST_F(OpticalDriveMonitorTest, WhatAFailedToolPrintedIsNotRead) {
    disc("NAME");
    StubTools::write(folder, drutil,
                     print(QByteArray(head) + " Type: CD-ROM  Name: /dev/disk4") + "exit 1");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(state(monitor), QStringLiteral("-/no/-/No optical drive found."));
}

TEST_F(OpticalDriveMonitorTest, AToolThatCrashesHasFailed) {
    StubTools::write(folder, drutil, "kill -11 $$");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(state(monitor), QStringLiteral("-/no/-/No optical drive found."));
}

TEST_F(OpticalDriveMonitorTest, AToolThatCannotBeStartedIsTheError) {
    folder.write(QStringLiteral("tools/usr/bin/drutil"), "not executable");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(monitor.lastError(),
              QStringLiteral("Failed to launch /usr/bin/drutil: Permission denied"));
    EXPECT_FALSE(monitor.driveDetected());
}

TEST_F(OpticalDriveMonitorTest, GarbageFromTheToolIsADriveWithoutDiscAndIdentity) {
    StubTools::write(folder, drutil, "head -c 61440 /dev/urandom");
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(state(monitor), QStringLiteral("-/yes/-/-"));
}

TEST_F(OpticalDriveMonitorTest, AReportOfAlmostAPipesFillIsReadWhole) {
    disc("NAME");
    StubTools::write(folder, drutil,
                     "head -c 61000 /dev/zero | tr '\\0' '\\n'\n" +
                         print(QByteArray(head) + " Type: CD-ROM  Name: /dev/disk4"));
    OpticalDriveMonitor monitor;
    monitor.poll();
    EXPECT_EQ(state(monitor), QStringLiteral("NAME/yes/ACME/-"));
}

TEST_F(OpticalDriveMonitorTest, AGoodPollAnnouncesErrorDriveIdentityAndDiscInThisOrder) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    watch(monitor);
    monitor.poll();
    EXPECT_THAT(
        takeChanges(),
        ElementsAre(u"will -/no/-/-", u"will -/no/-/-", u"detected -/yes/-/-", u"will -/yes/-/-",
                    u"identity -/yes/ACME/-", u"will -/yes/ACME/-", u"disc NAME/yes/ACME/-"));
}

TEST_F(OpticalDriveMonitorTest, AFailedPollAnnouncesDriveDiscAndErrorInThisOrder) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    monitor.poll();
    fail("gone");
    watch(monitor);
    monitor.poll();
    EXPECT_THAT(takeChanges(), ElementsAre(u"will NAME/yes/ACME/-", u"detected NAME/no/ACME/-",
                                           u"will NAME/no/ACME/-", u"disc -/no/ACME/-",
                                           u"will -/no/ACME/-", u"error -/no/ACME/gone"));
}

TEST_F(OpticalDriveMonitorTest, TheErrorGoesFirstWhenTheDriveIsBack) {
    fail("gone");
    OpticalDriveMonitor monitor;
    monitor.poll();
    report("");
    watch(monitor);
    monitor.poll();
    EXPECT_THAT(takeChanges(), ElementsAre(u"will -/no/-/gone", u"error -/no/-/-", u"will -/no/-/-",
                                           u"detected -/yes/-/-", u"will -/yes/-/-",
                                           u"identity -/yes/ACME/-", u"will -/yes/ACME/-"));
}

TEST_F(OpticalDriveMonitorTest, EqualPollsAnnounceEveryPropertyAndChangeNone) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    monitor.poll();
    const auto before = monitor.disc();
    watch(monitor);
    monitor.poll();
    const QString same = QStringLiteral("will NAME/yes/ACME/-");
    EXPECT_EQ(takeChanges(), (QStringList{same, same, same, same}));
    EXPECT_EQ(monitor.disc(), before);
}

TEST_F(OpticalDriveMonitorTest, EqualFailuresAnnounceThreePropertiesAndChangeNone) {
    fail("gone");
    OpticalDriveMonitor monitor;
    monitor.poll();
    watch(monitor);
    monitor.poll();
    const QString same = QStringLiteral("will -/no/-/gone");
    EXPECT_EQ(takeChanges(), (QStringList{same, same, same}));
}

TEST_F(OpticalDriveMonitorTest, AnyFieldOfTheDiscMakesAChange) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    monitor.poll();
    disc("NAME", "CD-R");
    watch(monitor);
    monitor.poll();
    EXPECT_EQ(takeChanges().last(), QStringLiteral("disc NAME/yes/ACME/-"));
    EXPECT_EQ(monitor.disc()->rawType, QStringLiteral("CD-R"));
}

TEST_F(OpticalDriveMonitorTest, StartPollsAtOnceAndThenEveryTwoSeconds) {
    report("");
    OpticalDriveMonitor monitor;
    monitor.start();
    EXPECT_TRUE(monitor.driveDetected());
    EXPECT_THAT(log(), ElementsAre(u"drutil status"));
    auto* timer = monitor.findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(timer->isActive());
    EXPECT_FALSE(timer->isSingleShot());
    EXPECT_EQ(timer->interval(), 2000);
    EXPECT_EQ(timer->timerType(), Qt::PreciseTimer);
    fire(timer);
    fire(timer);
    EXPECT_EQ(log().size(), 3);
    EXPECT_TRUE(timer->isActive());
}

TEST_F(OpticalDriveMonitorTest, EveryTickSeesWhatIsThereNow) {
    fail("gone");
    OpticalDriveMonitor monitor;
    monitor.start();
    auto* timer = monitor.findChild<QTimer*>();
    disc("NAME");
    fire(timer);
    EXPECT_EQ(state(monitor), QStringLiteral("NAME/yes/ACME/-"));
    report(" Type: No Media Inserted");
    fire(timer);
    EXPECT_EQ(state(monitor), QStringLiteral("-/yes/ACME/-"));
}

TEST_F(OpticalDriveMonitorTest, TheTimerRepeatsByItself) {
    report("");
    OpticalDriveMonitor monitor;
    monitor.start();
    monitor.findChild<QTimer*>()->setInterval(0);
    EXPECT_TRUE(waitUntil([this] { return log().size() >= 4; }));
}

TEST_F(OpticalDriveMonitorTest, ADiscardedMonitorIsQuiet) {
    report("");
    auto monitor = std::make_unique<OpticalDriveMonitor>();
    monitor->start();
    const QPointer<QTimer> timer = monitor->findChild<QTimer*>();
    watch(*monitor);
    monitor.reset();
    EXPECT_TRUE(timer.isNull());
    QCoreApplication::processEvents();
    EXPECT_THAT(changes, IsEmpty());
    EXPECT_EQ(log().size(), 1);
}

TEST_F(OpticalDriveMonitorTest, AStoppedMonitorKeepsWhatItKnewAndAsksNoMore) {
    disc("NAME");
    OpticalDriveMonitor monitor;
    monitor.start();
    monitor.stop();
    EXPECT_EQ(monitor.findChild<QTimer*>(), nullptr);
    EXPECT_EQ(state(monitor), QStringLiteral("NAME/yes/ACME/-"));
}

}  // namespace
