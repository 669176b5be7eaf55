// The second pass: its verdicts, what it leaves behind, and cancelling it.
#include "RipperTest.h"
#include "Verification.h"

namespace {

constexpr const char* notRead = "failed: Could not re-read the disc to verify.";
constexpr const char* noDigest = "failed: Could not compute checksum.";

class ISORipperVerificationTest : public RipperTest {
protected:
    static constexpr const char* sameImage = "printf image > \"$out\"";

    ~ISORipperVerificationTest() override {
        // Nothing of the second image stays, however it went; the ISO is as it was ripped.
        EXPECT_TRUE(waitUntil([&] {
            return temporaryFiles().filter(QStringLiteral("spindrift-verify-")).isEmpty();
        }));
        EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
    }

    QString verdict() const { return asText(ripper->verifyStatus()); }

    // Starts a thorough rip and waits until its nth tool of the second pass has written its process
    // identifier and can be reached by a cancellation.
    void startUntil(const char* pidFile, size_t tool = 1) {
        start(true);
        ASSERT_TRUE(waitUntil(
            [&] { return pidIn(pidFile) > 0 && ripper->trackedVerifyProcesses() == tool; }));
    }
};

TEST(ParseDigestTest, TheDigestIsTheFirstPieceBetweenBlanks) {
    EXPECT_EQ(Verification::parseDigest("abc123  /some/file name\n"), QStringLiteral("abc123"));
    EXPECT_EQ(Verification::parseDigest("  abc123 x"), QStringLiteral("abc123"));
    EXPECT_EQ(Verification::parseDigest("abc123"), QStringLiteral("abc123"));
}

TEST(ParseDigestTest, WithoutAPieceThereIsNoDigest) {
    EXPECT_EQ(Verification::parseDigest(""), std::nullopt);
    EXPECT_EQ(Verification::parseDigest("   "), std::nullopt);
    EXPECT_EQ(Verification::parseDigest("abc\xFF  file"), std::nullopt);
}

TEST_F(ISORipperVerificationTest, AQuickOneMatchesInTheTurnInWhichTheRipFinishes) {
    bool anotherTurn = false;
    bool anotherTurnAtTheVerdict = true;
    QObject::connect(ripper.get(), &ISORipper::finishedChanged, ripper.get(), [&] {
        QMetaObject::invokeMethod(
            ripper.get(), [&] { anotherTurn = true; }, Qt::QueuedConnection);
    });
    QObject::connect(ripper.get(), &ISORipper::verifyStatusChanged, ripper.get(),
                     [&] { anotherTurnAtTheVerdict = anotherTurn; });
    rip(sameImage);
    EXPECT_EQ(verdict(), QStringLiteral("matched"));
    EXPECT_FALSE(anotherTurnAtTheVerdict);
}

TEST_F(ISORipperVerificationTest, AQuickOneReadsNothingAgain) {
    rip(sameImage);
    EXPECT_EQ(runs("hdiutil").size(), 1);
    EXPECT_EQ(runs("shasum").size(), 0);
    EXPECT_EQ(changes->of(QStringLiteral("isVerifying")), QStringList());
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(ISORipperVerificationTest, AGoodDiscMatches) {
    rip(sameImage, true);
    EXPECT_EQ(changes->all(),
              QStringList({"isRunning=true", "isRunning=false", "bytesWritten=5", "progress=1",
                           "finished=true", "lastRipAverageBytesPerSecond=present",
                           "isVerifying=true", "isVerifying=false", "verifyStatus=matched"}));
}

TEST_F(ISORipperVerificationTest, TheToolsGetTheirArgumentsInOrder) {
    rip(sameImage, true);
    ASSERT_EQ(runs("hdiutil").size(), 2);
    const QRegularExpression base(
        u"^hdiutil create -srcdevice /dev/disk4 -format UDTO -o (" +
        QRegularExpression::escape(folder.temporary()) +
        u"spindrift-verify-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12})$");
    const auto match = base.match(runs("hdiutil").last());
    ASSERT_TRUE(match.hasMatch()) << runs("hdiutil").last();
    EXPECT_EQ(runs("shasum"), QStringList({u"shasum -a 256 " + destination(),
                                           u"shasum -a 256 " + match.captured(1) + u".cdr"}));
}

TEST_F(ISORipperVerificationTest, OtherBytesOnTheSecondPassAreAMismatch) {
    rip("[ $pass = rip ] && printf image > \"$out\" || printf imagf > \"$out\"", true);
    EXPECT_EQ(verdict(), QStringLiteral("mismatched"));
    EXPECT_TRUE(ripper->finished());
    EXPECT_EQ(ripper->error(), std::nullopt);
}

TEST_F(ISORipperVerificationTest, DigestsAreComparedWithoutCaseFolding) {
    stub(shasum, "case \"$3\" in *.cdr) echo ABC;; *) echo abc;; esac");
    rip(sameImage, true);
    EXPECT_EQ(verdict(), QStringLiteral("mismatched"));
}

TEST_F(ISORipperVerificationTest, ADiscThatCannotBeReadAgainIsAFailureWithoutDigests) {
    rip("printf image > \"$out\"; [ $pass = rip ]", true);
    EXPECT_EQ(verdict(), QLatin1String(notRead));
    EXPECT_EQ(runs("shasum").size(), 0);
    EXPECT_FALSE(ripper->isVerifying());
}

TEST_F(ISORipperVerificationTest, AnImagingToolThatCannotBeStartedAgainIsAFailure) {
    rip("printf image > \"$out\"; chmod -x \"$0\"", true);
    EXPECT_EQ(verdict(), QLatin1String(notRead));
}

TEST_F(ISORipperVerificationTest, AnIsoThatCannotBeDigestedIsAFailureAfterTheSecondRead) {
    stub(shasum, "case \"$3\" in *.cdr) echo abc;; *) echo abc; exit 1;; esac");
    rip(sameImage, true);
    EXPECT_EQ(verdict(), QLatin1String(noDigest));
    EXPECT_EQ(runs("hdiutil").size(), 2);
    EXPECT_EQ(runs("shasum").size(), 1);
}

TEST_F(ISORipperVerificationTest, ASecondImageThatCannotBeDigestedIsAFailure) {
    stub(shasum, "case \"$3\" in *.cdr) exit 1;; *) echo abc;; esac");
    rip(sameImage, true);
    EXPECT_EQ(verdict(), QLatin1String(noDigest));
    EXPECT_EQ(runs("shasum").size(), 2);
}

TEST_F(ISORipperVerificationTest, ADigestToolThatPrintsNothingUsableIsAFailure) {
    for (const char* body : {"exit 0", "printf '   '", "printf '\\377'"}) {
        stub(shasum, body);
        rip(sameImage, true);
        EXPECT_EQ(verdict(), QLatin1String(noDigest)) << body;
    }
}

TEST_F(ISORipperVerificationTest, ADigestToolThatCannotBeStartedIsAFailure) {
    QFile::setPermissions(folder.toolRoot() + QLatin1String(shasum), QFile::ReadOwner);
    rip(sameImage, true);
    EXPECT_EQ(verdict(), QLatin1String(noDigest));
}

TEST_F(ISORipperVerificationTest, ASecondReadThatIsKilledFromOutsideIsAFailure) {
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] || { echo $$ > \"$world/pid\"; exec sleep 1000; "
         "}");
    startUntil("pid");
    kill(pidIn("pid"), SIGKILL);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(verdict(), QLatin1String(notRead));
}

TEST_F(ISORipperVerificationTest, CancellingTheSecondReadLeavesNoVerdict) {
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] || { echo $$ > \"$world/pid\"; exec sleep 1000; "
         "}");
    startUntil("pid");
    EXPECT_TRUE(ripper->isVerifying());
    changes->clear();
    ripper->cancelVerification();
    EXPECT_EQ(changes->all(), QStringList());
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->all(), QStringList({"isVerifying=false"}));
    EXPECT_EQ(ripper->verifyStatus(), std::nullopt);
    EXPECT_TRUE(ripper->finished());
    // Nobody waits for pkill.
    EXPECT_TRUE(waitUntil([&] { return runs("pkill").size() == 1; }));
    EXPECT_EQ(runs("pkill"), QStringList({u"pkill -P " + QString::number(pidIn("pid"))}));
    EXPECT_EQ(runs("shasum").size(), 0);
}

TEST_F(ISORipperVerificationTest, CancellingTheFirstDigestLeavesNoVerdict) {
    stub(hdiutil, sameImage);
    stub(shasum, "echo $$ > \"$world/pid\"; exec sleep 1000");
    startUntil("pid", 2);
    ripper->cancelVerification();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ripper->verifyStatus(), std::nullopt);
    EXPECT_EQ(runs("shasum").size(), 1);
}

TEST_F(ISORipperVerificationTest, CancellingTheSecondDigestLeavesNoVerdict) {
    stub(hdiutil, sameImage);
    stub(shasum,
         "case \"$3\" in *.cdr) echo $$ > \"$world/pid\"; exec sleep 1000;; *) echo abc;; esac");
    startUntil("pid", 3);
    ripper->cancelVerification();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ripper->verifyStatus(), std::nullopt);
    EXPECT_EQ(runs("shasum").size(), 2);
}

TEST_F(ISORipperVerificationTest, ACancelEndsTheTreesOfAllToolsOfThePass) {
    stub(hdiutil, "printf image > \"$out\"; [ $pass = rip ] || echo $$ > \"$world/read\"");
    stub(shasum, "echo $$ > \"$world/pid\"; exec sleep 1000");
    startUntil("pid", 2);
    ripper->cancelVerification();
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(waitUntil([&] { return runs("pkill").size() == 2; }));
    for (const char* tool : {"read", "pid"}) {
        EXPECT_TRUE(runs("pkill").contains(u"pkill -P " + QString::number(pidIn(tool)))) << tool;
    }
}

TEST_F(ISORipperVerificationTest, AfterItsEndThereIsNothingLeftToCancel) {
    rip(sameImage, true);
    EXPECT_EQ(ripper->trackedVerifyProcesses(), 0U);
    changes->clear();
    ripper->cancelVerification();
    EXPECT_EQ(changes->all(), QStringList());
    EXPECT_EQ(verdict(), QStringLiteral("matched"));
    EXPECT_EQ(runs("pkill"), QStringList());
}

TEST_F(ISORipperVerificationTest, AToolThatStartsAfterACancelRunsOnAndItsResultIsDropped) {
    // The second read survives the cancel, so that both digests start after it.
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] || { trap '' TERM; echo $$ > \"$world/pid\"; "
         "wait_for go; }");
    startUntil("pid");
    ripper->cancelVerification();
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(runs("shasum").size(), 2);
    EXPECT_EQ(ripper->verifyStatus(), std::nullopt);
}

TEST_F(ISORipperVerificationTest, OneThatWasCancelledBeforeItBeganIsNotCancelled) {
    stub(hdiutil, "wait_for go; printf image > \"$out\"");
    start(true);
    ripper->cancelVerification();
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(verdict(), QStringLiteral("matched"));
}

TEST_F(ISORipperVerificationTest, TheNextVerificationIsNotCancelled) {
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] || { echo $$ > \"$world/pid\"; exec sleep 1000; "
         "}");
    startUntil("pid");
    ripper->cancelVerification();
    ASSERT_TRUE(waitForEnd());
    rip(sameImage, true);
    EXPECT_EQ(verdict(), QStringLiteral("matched"));
}

TEST_F(ISORipperVerificationTest, AnOldOnesEndDoesNotDisturbANewRip) {
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] || { echo $$ > \"$world/pid\"; wait_for go; "
         "exit 1; }");
    startUntil("pid");
    stub(hdiutil, "printf image > \"$out\"; wait_for second");
    start(false);
    EXPECT_FALSE(ripper->isVerifying());
    changes->clear();
    release("go");
    ASSERT_TRUE(waitUntil(
        [&] { return temporaryFiles().filter(QStringLiteral("spindrift-verify-")).isEmpty(); }));
    release("second");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->of(QStringLiteral("isVerifying")), QStringList());
    EXPECT_EQ(changes->of(QStringLiteral("verifyStatus")), QStringList({"matched"}));
}

TEST_F(ISORipperVerificationTest, ADiscardedEngineStillGetsItsSecondImageRemoved) {
    stub(hdiutil,
         "printf image > \"$out\"; [ $pass = rip ] || { echo $$ > \"$world/pid\"; wait_for go; }");
    startUntil("pid");
    ripper.reset();
    EXPECT_EQ(temporaryFiles().size(), 1);
    release("go");
    // What is left behind is checked at the end of every one of these tests.
}

}  // namespace
