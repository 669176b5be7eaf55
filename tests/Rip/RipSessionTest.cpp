#include "RipSession.h"

#include "DiagnosticsStore.h"
#include "NotificationManager.h"
#include "NotificationServer.h"
#include "OpticalDriveMonitor.h"
#include "RipperTest.h"
#include "SessionBus.h"

namespace {

constexpr const char* ejectFailed =
    "Couldn't Eject Disc: The rip finished, but the disc couldn't be ejected automatically. You "
    "can eject it manually.";

QByteArray plist(const QByteArray& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + content +
           "</dict></plist>";
}

class RipSessionTest : public RipperTest {
protected:
    RipSessionTest() {
        insert("DVD-ROM", "disk4", "ASUS");
        monitor.poll();
        stub(hdiutil, "printf image > \"$out\"");
        session = std::make_unique<RipSession>(
            monitor, *ripper, [this](const SpeedTestResult& result) { store.record(result); },
            RipChoices{[this] { return thoroughVerify; }, [this] { return ejectWhenDone; }});
        session->setDestination(destination());
        QObject::connect(session.get(), &RipSession::permissionNeeded, session.get(),
                         [this] { ++permissionNeeded; });
        QObject::connect(session.get(), &RipSession::ejectFinished, session.get(),
                         [this](bool ejected) { ejects.append(ejected); });
    }

    // What the drive tools answer from now on; an absent vendor is a drive without identity.
    void insert(const QByteArray& type, const QByteArray& device, const QByteArray& vendor,
                const QByteArray& sizes = "<key>TotalSize</key><integer>4700372992</integer>") {
        const QByteArray table = vendor.isEmpty()
                                     ? QByteArray()
                                     : " Vendor   Product           Rev \n " +
                                           vendor.leftJustified(8) + " BW-16D1HT         3.10\n\n";
        StubTools::write(folder, QStringLiteral("/usr/bin/drutil"),
                         "[ \"$1\" = status ] || exit 1\ncat <<'END'\n" + table +
                             "           Type: " + type + "           Name: /dev/" + device +
                             "\nEND");
        StubTools::write(folder, QStringLiteral("/usr/sbin/diskutil"),
                         "case \"$1 $2\" in\n'info -plist') cat <<'END'\n" + plist(sizes) +
                             "\nEND\n;;\nlist\\ /dev/*) echo '  1:  CD_Partition  5.0 KB  " +
                             device + "s1';;\neject*) " + ejectCommand + ";;\n*) exit 1;;\nesac");
    }

    void ripNow() {
        session->startRip();
        ASSERT_TRUE(waitForEnd());
    }
    bool waitForEject() {
        return waitUntil([&] { return !session->isEjecting(); });
    }
    // All that the desktop was told so far.
    QStringList told() const {
        NotificationManager::flush(60000);
        return server.texts();
    }

    const SessionBus bus{folder};
    const NotificationServer server{bus.address(), {}};
    OpticalDriveMonitor monitor;
    DiagnosticsStore store;
    bool thoroughVerify = false;
    bool ejectWhenDone = false;
    QByteArray ejectCommand = "exit 0";
    std::unique_ptr<RipSession> session;
    int permissionNeeded = 0;
    QList<bool> ejects;
};

QString fileName(const std::optional<QByteArray>& volumeName, DiscKind kind = DiscKind::dvd) {
    OpticalDisc disc;
    disc.kind = kind;
    if (volumeName) {
        disc.volumeName = QString::fromUtf8(*volumeName);
    }
    return RipSession::defaultFileName(disc);
}

TEST(DefaultFileNameTest, ItIsTheVolumesName) {
    EXPECT_EQ(fileName("MY DISC"), QStringLiteral("MY DISC.iso"));
    EXPECT_EQ(fileName("d\xC3\xBC"), QStringLiteral("d\u00fc.iso"));
    EXPECT_EQ(fileName("x.iso"), QStringLiteral("x.iso.iso"));
    EXPECT_EQ(fileName("\u0E01\U0001F4BF"), QStringLiteral("\u0E01\U0001F4BF.iso"));
}

TEST(DefaultFileNameTest, SlashesBecomeHyphens) {
    EXPECT_EQ(fileName("A/B"), QStringLiteral("A-B.iso"));
    EXPECT_EQ(fileName("/A//B/"), QStringLiteral("-A--B-.iso"));
}

TEST(DefaultFileNameTest, WithoutANameTheKindServes) {
    EXPECT_EQ(fileName(std::nullopt), QStringLiteral("DVD.iso"));
    EXPECT_EQ(fileName(""), QStringLiteral("DVD.iso"));
    EXPECT_EQ(fileName(std::nullopt, DiscKind::cd), QStringLiteral("CD.iso"));
    EXPECT_EQ(fileName(std::nullopt, DiscKind::bd), QStringLiteral("BD.iso"));
    EXPECT_EQ(fileName(std::nullopt, DiscKind::unknown), QStringLiteral("Disc.iso"));
}

TEST(DefaultFileNameTest, ItFitsIntoAFileNameWithItsExtension) {
    EXPECT_EQ(fileName(QByteArray(251, 'x')), QString(251, u'x') + QStringLiteral(".iso"));
    EXPECT_EQ(fileName(QByteArray(252, 'x')), QString(251, u'x') + QStringLiteral(".iso"));
    EXPECT_EQ(fileName(QByteArray(1000000, 'x')), QString(251, u'x') + QStringLiteral(".iso"));
}

TEST(DefaultFileNameTest, ItIsCutBetweenWholeCharacters) {
    const QByteArray front(249, 'x');
    const QString kept = QString::fromUtf8(front);
    EXPECT_EQ(fileName(front + "\xC3\xA4"), kept + u"\u00e4.iso");
    for (const char* last : {"\xE6\x97\xA5", "\xF0\x9F\x92\xBF", "y\xCC\x81",
                             "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x9A\x80"}) {
        EXPECT_EQ(fileName(front + last), kept + u".iso") << last;
    }
    EXPECT_EQ(fileName(QByteArray(245, 'x') + "\u0E01\U0001F4BF"),
              QString(245, u'x') + u"\u0E01.iso");
    const QString japanese = fileName(QByteArray("\xE6\x97\xA5").repeated(200));
    EXPECT_EQ(japanese, QString(83, u'\u65e5') + u".iso");
}

TEST(DefaultFileNameTest, AnEndlessCharacterLeavesTheKind) {
    EXPECT_EQ(fileName("y" + QByteArray("\xCC\x81").repeated(200)), QStringLiteral("DVD.iso"));
}

TEST(DefaultFileNameTest, OddNamesStayButForWhatNoFileNameCanHold) {
    EXPECT_EQ(fileName("   "), QStringLiteral("   .iso"));
    EXPECT_EQ(fileName(".."), QStringLiteral("...iso"));
    EXPECT_EQ(fileName(".hidden"), QStringLiteral(".hidden.iso"));
    EXPECT_EQ(fileName("a\nb\t"), QStringLiteral("a\nb\t.iso"));
    EXPECT_EQ(fileName("/"), QStringLiteral("-.iso"));
    EXPECT_EQ(fileName(QByteArray("a\0b", 3)), QStringLiteral("ab.iso"));
    EXPECT_EQ(fileName(QByteArray("\0", 1)), QStringLiteral("DVD.iso"));
}

TEST_F(RipSessionTest, ARipReadsTheDiscsImageSource) {
    ripNow();
    ASSERT_EQ(runs("hdiutil").size(), 1);
    EXPECT_TRUE(runs("hdiutil").first().startsWith(
        QStringLiteral("hdiutil create -srcdevice /dev/disk4s1 -format")));
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
}

TEST_F(RipSessionTest, WithoutADestinationNothingStarts) {
    session->setDestination(std::nullopt);
    session->startRip();
    EXPECT_FALSE(ripper->isRunning());
    EXPECT_EQ(runs("hdiutil").size(), 0);
}

TEST_F(RipSessionTest, WithoutADiscNothingStarts) {
    insert("None", "disk4", "ASUS");
    monitor.poll();
    session->startRip();
    EXPECT_FALSE(ripper->isRunning());
    EXPECT_EQ(runs("hdiutil").size(), 0);
}

TEST_F(RipSessionTest, TheChoiceOfVerificationIsAskedAtTheStart) {
    thoroughVerify = true;
    session->startRip();
    thoroughVerify = false;
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(runs("hdiutil").size(), 2);
}

TEST_F(RipSessionTest, AMatchIsToldAndClearsTheDestination) {
    int destinationChanges = 0;
    QObject::connect(session.get(), &RipSession::destinationChanged, session.get(),
                     [&] { ++destinationChanges; });
    ripNow();
    EXPECT_EQ(told(), QStringList({"Rip Verified: Saved and verified: disc.iso"}));
    EXPECT_EQ(session->destination(), std::nullopt);
    EXPECT_EQ(destinationChanges, 1);
}

TEST_F(RipSessionTest, OddFileNamesAreToldAsTheyAre) {
    session->setDestination(folder.path(QStringLiteral("R&B <b>\"best\"<b>.iso")));
    ripNow();
    EXPECT_EQ(told(), QStringList({"Rip Verified: Saved and verified: R&B <b>\"best\"<b>.iso"}));
}

TEST_F(RipSessionTest, AMatchWithoutADestinationIsToldWithoutAName) {
    stub(hdiutil, "wait_for go; printf image > \"$out\"");
    session->startRip();
    session->setDestination(std::nullopt);
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(told(), QStringList({"Rip Verified: ISO verified."}));
}

TEST_F(RipSessionTest, AMatchEjectsTheWholeDiscWhenChosenAtItsEnd) {
    session->startRip();
    ejectWhenDone = true;
    ASSERT_TRUE(waitForEnd());
    ASSERT_TRUE(waitForEject());
    EXPECT_EQ(runs("diskutil").filter(QStringLiteral("eject")),
              QStringList({"diskutil eject /dev/disk4"}));
    EXPECT_EQ(ejects, QList<bool>({true}));
    EXPECT_EQ(told(), QStringList({"Rip Verified: Saved and verified: disc.iso"}));
}

TEST_F(RipSessionTest, AMatchLeavesTheDiscInWhenNotChosen) {
    ripNow();
    EXPECT_FALSE(session->isEjecting());
    EXPECT_EQ(runs("diskutil").filter(QStringLiteral("eject")), QStringList());
}

TEST_F(RipSessionTest, AMismatchNeverEjectsAndKeepsTheDestination) {
    thoroughVerify = ejectWhenDone = true;
    stub(hdiutil, "printf $pass > \"$out\"");
    ripNow();
    EXPECT_EQ(told(), QStringList({"Verification Failed: The ISO does not match the disc. The disc "
                                   "was not ejected \u2014 you may want to retry."}));
    EXPECT_FALSE(session->isEjecting());
    EXPECT_EQ(session->destination(), destination());
}

TEST_F(RipSessionTest, AVerificationThatFailsIsToldWithItsReason) {
    thoroughVerify = ejectWhenDone = true;
    stub(shasum, "exit 1");
    ripNow();
    stub(hdiutil, "printf image > \"$out\"; [ $pass = rip ]");
    ripNow();
    EXPECT_EQ(told(), QStringList({"Verification Error: Could not compute checksum.",
                                   "Verification Error: Could not re-read the disc to verify."}));
    EXPECT_FALSE(session->isEjecting());
    EXPECT_EQ(session->destination(), destination());
}

TEST_F(RipSessionTest, AFailureIsToldWithItsDescription) {
    stub(hdiutil, "printf 'no medium' >&2; exit 1");
    ripNow();
    EXPECT_EQ(told(), QStringList({"Rip Failed: hdiutil exited with an error: no medium"}));
    EXPECT_EQ(permissionNeeded, 0);
    EXPECT_EQ(session->destination(), destination());
    EXPECT_EQ(store.results().size(), 0);
}

TEST_F(RipSessionTest, AMissingPermissionAlsoAsksForTheGuide) {
    stub(hdiutil, "echo Permission denied >&2; exit 1");
    ripNow();
    EXPECT_EQ(permissionNeeded, 1);
    EXPECT_EQ(told(),
              QStringList({"Rip Failed: " + RipError::permissionDenied().errorDescription()}));
}

TEST_F(RipSessionTest, ATwiceFailedRipIsToldTwice) {
    stub(hdiutil, "exit 1");
    ripNow();
    ripNow();
    EXPECT_EQ(told(), QStringList({"Rip Failed: hdiutil exited with an error: exit code 1",
                                   "Rip Failed: hdiutil exited with an error: exit code 1"}));
}

TEST_F(RipSessionTest, TwoGoodRipsAreToldSeparately) {
    ripNow();
    session->setDestination(folder.path(QStringLiteral("two.iso")));
    ripNow();
    EXPECT_EQ(told(), QStringList({"Rip Verified: Saved and verified: disc.iso",
                                   "Rip Verified: Saved and verified: two.iso"}));
}

TEST_F(RipSessionTest, ACancelledRipIsNotToldAndKeepsTheDestination) {
    ejectWhenDone = true;
    stub(hdiutil, ": > \"$world/started\"; exec sleep 1000");
    session->startRip();
    ASSERT_TRUE(waitForFile("started"));
    session->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(told(), QStringList());
    EXPECT_FALSE(session->isEjecting());
    EXPECT_EQ(session->destination(), destination());
    EXPECT_EQ(store.results().size(), 0);
}

TEST_F(RipSessionTest, ACancelledVerificationIsNotToldAndKeepsTheImage) {
    thoroughVerify = ejectWhenDone = true;
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] || { : > \"$world/second\"; exec sleep 1000; }");
    session->startRip();
    ASSERT_TRUE(waitForFile("second"));
    ASSERT_TRUE(waitUntil([&] { return ripper->trackedVerifyProcesses() == 1; }));
    session->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(told(), QStringList());
    EXPECT_FALSE(session->isEjecting());
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
}

TEST_F(RipSessionTest, WhatTheVerificationStartsAfterItsCancellationIsCancelledToo) {
    thoroughVerify = ejectWhenDone = true;
    // The second reading ends well in spite of its cancellation, and the digest begins.
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] && exit 0\n"
         "trap 'exit 0' TERM; : > \"$world/second\"; wait_for never");
    stub(shasum, "exec sleep 1000");
    session->startRip();
    ASSERT_TRUE(waitForFile("second"));
    ASSERT_TRUE(waitUntil([&] { return ripper->trackedVerifyProcesses() == 1; }));
    session->cancelUntilNothingIsLeft();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ripper->verifyStatus(), std::nullopt);
    EXPECT_EQ(told(), QStringList());
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
}

TEST_F(RipSessionTest, AFailedEjectIsTold) {
    ejectCommand = "exit 1";
    insert("DVD-ROM", "disk4", "ASUS");
    session->ejectDisc(QStringLiteral("disk4"));
    EXPECT_TRUE(session->isEjecting());
    ASSERT_TRUE(waitForEject());
    EXPECT_EQ(ejects, QList<bool>({false}));
    EXPECT_EQ(told(), QStringList({ejectFailed}));
}

TEST_F(RipSessionTest, AFailedEjectIsToldWhenTheSessionIsGone) {
    ejectCommand = "exit 1";
    insert("DVD-ROM", "disk4", "ASUS");
    session->ejectDisc(QStringLiteral("disk4"));
    session.reset();
    EXPECT_TRUE(waitUntil([&] { return told() == QStringList({ejectFailed}); }));
}

TEST_F(RipSessionTest, AnEjectRunsItsToolsAtALowPriority) {
    ejectCommand = "nice > \"$0.niceness\"; exit 0";
    insert("DVD-ROM", "disk4", "ASUS");
    session->ejectDisc(QStringLiteral("disk4"));
    ASSERT_TRUE(waitForEject());
    const auto niceness =
        TestFolder::read(folder.toolRoot() + QStringLiteral("/usr/sbin/diskutil.niceness"));
    ASSERT_TRUE(niceness);
    EXPECT_GE(niceness->trimmed().toInt(), 10);
}

TEST_F(RipSessionTest, AFinishedRipIsRecorded) {
    ripNow();
    ASSERT_EQ(store.results().size(), 1);
    const auto& result = store.results().first();
    EXPECT_FALSE(result.id.isNull());
    EXPECT_EQ(result.driveKey, QStringLiteral("ASUS|BW-16D1HT|3.10"));
    EXPECT_EQ(result.driveModelString, monitor.driveIdentity()->modelString());
    EXPECT_EQ(result.discKind, QStringLiteral("DVD"));
    EXPECT_EQ(result.discSizeBytes, 4700372992);
    EXPECT_EQ(result.averageBytesPerSecond, ripper->lastRipAverageBytesPerSecond());
    EXPECT_EQ(result.source, SpeedTestResult::Source::rip);
    EXPECT_EQ(DiagnosticsStore().results().size(), 1);
}

TEST_F(RipSessionTest, ARipOfADiscOfUnknownSizeIsRecordedWithItsBytes) {
    insert("DVD-ROM", "disk4", "ASUS", "<key>x</key><string>y</string>");
    monitor.poll();
    ripNow();
    ASSERT_EQ(store.results().size(), 1);
    EXPECT_EQ(store.results().first().discSizeBytes, 5);
}

TEST_F(RipSessionTest, ARipFromAnUnknownDriveIsNotRecorded) {
    insert("DVD-ROM", "disk4", "");
    monitor.poll();
    ASSERT_EQ(monitor.driveIdentity(), std::nullopt);
    ripNow();
    EXPECT_TRUE(ripper->finished());
    EXPECT_EQ(store.results().size(), 0);
}

TEST_F(RipSessionTest, WhatIsRecordedAndEjectedIsWhatTheRipBeganWith) {
    ejectWhenDone = true;
    stub(hdiutil, ": > \"$world/started\"; wait_for go; printf image > \"$out\"");
    session->startRip();
    ASSERT_TRUE(waitForFile("started"));
    insert("CD-ROM", "disk7", "PIONEER");
    monitor.poll();
    release("go");
    ASSERT_TRUE(waitForEnd());
    ASSERT_TRUE(waitForEject());
    ASSERT_EQ(store.results().size(), 1);
    EXPECT_EQ(store.results().first().driveKey, QStringLiteral("ASUS|BW-16D1HT|3.10"));
    EXPECT_EQ(store.results().first().discKind, QStringLiteral("DVD"));
    EXPECT_EQ(runs("diskutil").filter(QStringLiteral("eject")),
              QStringList({"diskutil eject /dev/disk4"}));
}

TEST_F(RipSessionTest, ARipThatDoesNotMatchIsRecordedAllTheSame) {
    thoroughVerify = true;
    stub(hdiutil, "printf $pass > \"$out\"");
    ripNow();
    EXPECT_EQ(store.results().size(), 1);
}

}  // namespace
