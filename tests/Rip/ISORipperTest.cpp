#include "ISORipper.h"

#include <QDir>

#include "RipperTest.h"

namespace {

class ISORipperTest : public RipperTest {};

TEST_F(ISORipperTest, ANewEngineIsIdle) {
    EXPECT_FALSE(ripper->isRunning());
    EXPECT_EQ(ripper->bytesWritten(), 0);
    EXPECT_EQ(ripper->progress(), 0);
    EXPECT_EQ(ripper->speedBytesPerSecond(), 0);
    EXPECT_FALSE(ripper->finished());
    EXPECT_EQ(ripper->error(), std::nullopt);
    EXPECT_FALSE(ripper->isVerifying());
    EXPECT_EQ(ripper->verifyStatus(), std::nullopt);
    EXPECT_EQ(ripper->lastRipAverageBytesPerSecond(), std::nullopt);
}

TEST_F(ISORipperTest, TheImagingToolGetsItsArgumentsInOrder) {
    rip("echo image > \"$out\"");
    ASSERT_EQ(runs("hdiutil").size(), 1);
    const QRegularExpression expected(
        u"^hdiutil create -srcdevice /dev/disk4 -format UDTO -puppetstrings -o " +
        QRegularExpression::escape(folder.temporary()) +
        u"spindrift-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.cdr$");
    EXPECT_TRUE(expected.match(runs("hdiutil").first()).hasMatch()) << runs("hdiutil").first();
}

TEST_F(ISORipperTest, AGoodRipPublishesItsChangesInOrder) {
    rip("printf image > \"$out\"; echo PERCENT:50");
    EXPECT_EQ(changes->all(),
              QStringList({"isRunning=true", "progress=0.5", "isRunning=false", "bytesWritten=5",
                           "progress=1", "finished=true", "lastRipAverageBytesPerSecond=present",
                           "verifyStatus=matched"}));
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_GT(*ripper->lastRipAverageBytesPerSecond(), 0);
}

TEST_F(ISORipperTest, TheAverageIsTheWholeImageOverTheTimeFromTheStartOfTheToolToTheEnd) {
    using Clock = ISORipper::Clock;
    using Seconds = std::chrono::duration<double>;
    stub(hdiutil,
         "printf part > \"$out\"; : > \"$world/started\"; wait_for go; "
         "head -c 1000000 /dev/zero > \"$out\"");
    const auto beforeStart = Clock::now();
    ripper->start(QStringLiteral("disk4"), destination(), 77, false);
    const auto afterStart = Clock::now();
    ASSERT_TRUE(waitForFile("started"));
    const auto started = Clock::now();
    ripper->sample(afterStart + std::chrono::hours(1));
    // Long beside what is still to come, so that a time without it would be seen.
    ASSERT_TRUE(
        waitUntil([&] { return Clock::now() - afterStart > 10 * (started - beforeStart); }));
    const auto beforeEnd = Clock::now();
    release("go");
    ASSERT_TRUE(waitForEnd());
    const Seconds most = Clock::now() - beforeStart;
    const Seconds least = beforeEnd - afterStart;
    ASSERT_TRUE(ripper->lastRipAverageBytesPerSecond());
    EXPECT_GE(*ripper->lastRipAverageBytesPerSecond(), 1000000 / most.count());
    EXPECT_LE(*ripper->lastRipAverageBytesPerSecond(), 1000000 / least.count());
}

TEST_F(ISORipperTest, EveryChangeIsAnnouncedBeforeItHappens) {
    rip("printf image > \"$out\"; echo PERCENT:50");
    EXPECT_GT(changes->all().size(), 0);
    EXPECT_EQ(changes->unannounced(), 0);
}

TEST_F(ISORipperTest, ANewRipClearsTheErrorTheVerdictAndTheAverageOfTheLast) {
    rip("echo broken >&2; exit 1");
    EXPECT_NE(ripper->error(), std::nullopt);
    rip("printf image > \"$out\"; echo PERCENT:50");
    EXPECT_EQ(ripper->error(), std::nullopt);
    EXPECT_NE(ripper->verifyStatus(), std::nullopt);
    EXPECT_NE(ripper->lastRipAverageBytesPerSecond(), std::nullopt);

    stub(hdiutil, "wait_for go");
    changes->clear();
    start();
    EXPECT_EQ(changes->all(),
              QStringList({"bytesWritten=0", "progress=0", "finished=false", "verifyStatus=absent",
                           "lastRipAverageBytesPerSecond=absent", "isRunning=true"}));
    release("go");
    ASSERT_TRUE(waitForEnd());
}

TEST_F(ISORipperTest, AToolThatCannotBeStartedPublishesOnlyTheError) {
    stub(hdiutil, "");
    QFile::setPermissions(folder.toolRoot() + QLatin1String(hdiutil), QFile::ReadOwner);
    start();
    EXPECT_EQ(changes->all(), QStringList({"error=launchFailed: Permission denied"}));
    EXPECT_FALSE(ripper->isRunning());
    EXPECT_EQ(ripper->findChild<QTimer*>(), nullptr);
    EXPECT_EQ(ripper->error()->errorDescription(),
              QStringLiteral("Could not start rip: Permission denied"));
}

TEST_F(ISORipperTest, AMissingInterpreterIsAFileThatDoesNotExist) {
    const QString tool = folder.write(QStringLiteral("tools/usr/bin/hdiutil"), "#!/none/such\n");
    QFile::setPermissions(tool, QFile::ReadOwner | QFile::ExeOwner);
    start();
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("launchFailed: No such file or directory"));
}

TEST_F(ISORipperTest, PercentagesBecomeFractionsAndNegativeOnesIndeterminate) {
    rip("printf 'PERCENT:-1\\nPERCENT: 42.5\\nx PERCENT:\\t150 \\nPERCENT:\\nPERCENT:abc\\n"
        "PERCENT:7%%\\nnothing\\n'; exit 1");
    EXPECT_EQ(changes->of(QStringLiteral("progress")), QStringList({"-1", "0.425", "1"}));
}

TEST_F(ISORipperTest, ALineInTwoChunksCountsOnceAndOneWithoutEndNever) {
    stub(hdiutil, "printf PERC; wait_for second; printf 'ENT:25\\nPERCENT:75'; exit 1");
    start();
    EXPECT_EQ(changes->of(QStringLiteral("progress")), QStringList());
    release("second");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->of(QStringLiteral("progress")), QStringList({"0.25"}));
}

TEST_F(ISORipperTest, AChunkThatIsNotUtf8IsDroppedWhole) {
    stub(hdiutil, "printf 'PERCENT:10\\n\\377\\n'; wait_for go; printf 'PERCENT:20\\n'; exit 1");
    start();
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(changes->of(QStringLiteral("progress")).contains(QStringLiteral("0.1")));
}

TEST_F(ISORipperTest, AFailureCarriesTheToolsErrorTextAsItStands) {
    rip("printf ' hdiutil: create failed - no medium\\n\\n' >&2; exit 1");
    EXPECT_EQ(changes->all(),
              QStringList({"isRunning=true", "isRunning=false",
                           "error=imagingFailed:  hdiutil: create failed - no medium\n\n"}));
}

TEST_F(ISORipperTest, AFailureWithoutTextCarriesTheExitStatus) {
    rip("exit 17");
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("imagingFailed: exit code 17"));
}

TEST_F(ISORipperTest, AnErrorTextOfALineBreakOnlyIsATextToo) {
    rip("echo >&2; exit 3");
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("imagingFailed: \n"));
}

TEST_F(ISORipperTest, AnErrorTextThatIsNotUtf8CountsAsNone) {
    rip("printf 'caf\\351' >&2; exit 4");
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("imagingFailed: exit code 4"));
}

TEST_F(ISORipperTest, AToolThatWasKilledHasTheSignalsNumberAsItsStatus) {
    rip("kill -9 $$");
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("imagingFailed: exit code 9"));
}

TEST_F(ISORipperTest, SuccessWithoutAnImageIsAFailureWithStatusZero) {
    rip("exit 0");
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("imagingFailed: exit code 0"));
    EXPECT_FALSE(ripper->finished());
}

TEST_F(ISORipperTest, SuccessWithoutAnImageCarriesTheToolsText) {
    rip("printf oops >&2");
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("imagingFailed: oops"));
}

TEST_F(ISORipperTest, WarningsOfAToolThatSucceededDoNotMatter) {
    rip("echo 'Permission denied, then granted' >&2; printf image > \"$out\"");
    EXPECT_EQ(ripper->error(), std::nullopt);
    EXPECT_TRUE(ripper->finished());
}

TEST_F(ISORipperTest, PermissionDeniedIsFoundInAnyLetterCaseAndPlace) {
    for (const char* text : {"permission denied", "hdiutil: create failed - Permission denied\n",
                             "x PERMISSION DENIED y"}) {
        rip(QByteArray("printf '") + text + "' >&2; exit 1");
        EXPECT_EQ(ripper->error(), RipError::permissionDenied()) << text;
    }
}

TEST_F(ISORipperTest, PermissionDeniedCountsWithStatusZeroAndNoImageToo) {
    rip("echo Permission Denied >&2");
    EXPECT_EQ(ripper->error(), RipError::permissionDenied());
}

TEST_F(ISORipperTest, TheTemporaryImageStaysAfterAFailure) {
    rip("printf part > \"$out\"; exit 1");
    ASSERT_EQ(temporaryFiles().size(), 1);
    EXPECT_EQ(TestFolder::read(temporaryImage()), QByteArray("part"));
    EXPECT_FALSE(QFile::exists(destination()));
}

TEST_F(ISORipperTest, AFailureLeavesWhatStandsAtTheDestination) {
    folder.write(QStringLiteral("disc.iso"), "old");
    rip("printf part > \"$out\"; exit 1");
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("old"));
}

TEST_F(ISORipperTest, AFloodOnStandardErrorNeitherBlocksTheToolNorLosesAByte) {
    rip("head -c 10000000 /dev/zero | tr '\\0' x >&2; exit 1");
    EXPECT_EQ(ripper->error()->text().size(), 10000000);
}

TEST_F(ISORipperTest, AGrandchildThatHoldsThePipesDoesNotHoldUpTheEnd) {
    stub(hdiutil,
         "( trap '' TERM; wait_for go ) &\nprintf image > \"$out\"; echo PERCENT:50; exit 0");
    start();
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(ripper->finished());
    release("go");
}

TEST_F(ISORipperTest, ADiscardedEngineDropsWhatComesBackAndLeavesTheToolRunning) {
    stub(hdiutil,
         ": > \"$world/started\"; wait_for go; echo PERCENT:50; printf image > \"$out\"; "
         ": > \"$world/ended\"");
    start();
    ASSERT_TRUE(waitForFile("started"));
    ripper.reset();
    release("go");
    ASSERT_TRUE(waitForFile("ended"));
    EXPECT_EQ(TestFolder::read(temporaryImage()), QByteArray("image"));
    EXPECT_FALSE(QFile::exists(destination()));
}

TEST_F(ISORipperTest, AResetDuringARipKeepsTheOldToolsEndFromTheNewState) {
    stub(hdiutil, "echo $$ > \"$world/pid\"; wait_for go; echo PERCENT:50; exit 3");
    start();
    ASSERT_TRUE(waitUntil([&] { return pidIn("pid") > 0; }));
    stub(hdiutil, "wait_for second; echo PERCENT:75; printf image > \"$out\"");
    start();
    changes->clear();
    release("go");
    ASSERT_TRUE(waitUntil([&] { return kill(pidIn("pid"), 0) != 0; }));
    release("second");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->all(),
              QStringList({"progress=0.75", "isRunning=false", "bytesWritten=5", "progress=1",
                           "finished=true", "lastRipAverageBytesPerSecond=present",
                           "verifyStatus=matched"}));
}

}  // namespace
