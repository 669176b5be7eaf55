// Cancelling a rip: what goes, what stays, what is published when.
#include <QDir>

#include "RemovedAtExit.h"
#include "RipperTest.h"

namespace {

class ISORipperCancelTest : public RipperTest {
protected:
    void startAndWaitFor(const char* name) {
        start();
        ASSERT_TRUE(waitForFile(name));
    }
};

TEST_F(ISORipperCancelTest, TheTemporaryImageAndTheFileAtTheDestinationGo) {
    folder.write(QStringLiteral("disc.iso"), "an older image");
    stub(hdiutil, "printf part > \"$out\"; : > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel();
    EXPECT_FALSE(QFile::exists(destination()));
    EXPECT_EQ(changes->all(), QStringList({"isRunning=true"}));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->all(), QStringList({"isRunning=true", "isRunning=false"}));
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_EQ(ripper->error(), std::nullopt);
    EXPECT_FALSE(ripper->finished());
    EXPECT_EQ(ripper->verifyStatus(), std::nullopt);
}

TEST_F(ISORipperCancelTest, TheFileAtTheDestinationIsInTheTrash) {
    folder.write(QStringLiteral("disc.iso"), "an older image");
    stub(hdiutil, ": > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel();
    EXPECT_FALSE(QFile::exists(destination()));
    EXPECT_EQ(TestFolder::read(folder.path(QStringLiteral("data/Trash/files/disc.iso"))),
              QByteArray("an older image"));
    ASSERT_TRUE(waitForEnd());
}

TEST_F(ISORipperCancelTest, TheSpeedGoesBackToZero) {
    stub(hdiutil, "printf part > \"$out\"; : > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->sample(ISORipper::Clock::now() + std::chrono::seconds(1));
    EXPECT_GT(ripper->speedBytesPerSecond(), 0);
    changes->clear();
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->all(), QStringList({"isRunning=false", "speedBytesPerSecond=0"}));
}

TEST_F(ISORipperCancelTest, TheToolsChildrenAreEndedThroughPkill) {
    // The tool itself stays until its child has had its signal.
    stub(hdiutil,
         "( trap ': > \"$world/ended\"; exit' TERM; : > \"$world/child\"; wait_for go ) &\n"
         "trap '' TERM\necho $$ > \"$world/pid\"; wait_for ended; exit 1");
    start();
    ASSERT_TRUE(waitForFile("child"));
    ASSERT_TRUE(waitUntil([&] { return pidIn("pid") > 0; }));
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(runs("pkill"), QStringList({u"pkill -P " + QString::number(pidIn("pid"))}));
}

TEST_F(ISORipperCancelTest, APkillThatCannotBeStartedIsPassedOver) {
    QFile::setPermissions(folder.toolRoot() + QLatin1String(pkill), QFile::ReadOwner);
    stub(hdiutil, ": > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ripper->error(), std::nullopt);
}

TEST_F(ISORipperCancelTest, TheStateStaysUntilTheToolHasReallyEnded) {
    stub(hdiutil, "trap '' TERM\n: > \"$world/started\"; wait_for go; echo PERCENT:10; exit 0");
    startAndWaitFor("started");
    ripper->cancel();
    EXPECT_TRUE(ripper->isRunning());
    release("go");
    ASSERT_TRUE(waitForEnd());
}

TEST_F(ISORipperCancelTest, AnImageThatWasFinishedAllTheSameIsNotMoved) {
    stub(hdiutil, "trap '' TERM\n: > \"$world/started\"; wait_for go; printf image > \"$out\"");
    startAndWaitFor("started");
    ripper->cancel();
    release("go");
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(QFile::exists(destination()));
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_FALSE(ripper->finished());
}

TEST_F(ISORipperCancelTest, NoErrorIsPublishedWhateverTheToolSays) {
    stub(hdiutil,
         "trap 'echo Permission denied >&2; exit 5' TERM\n: > \"$world/started\"; "
         "while :; do sleep 0.01; done");
    startAndWaitFor("started");
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(ripper->error(), std::nullopt);
}

TEST_F(ISORipperCancelTest, AFolderAtTheDestinationIsLeftAlone) {
    folder.write(QStringLiteral("disc.iso/precious"), "kept");
    QDir().mkpath(folder.path(QStringLiteral("empty.iso")));
    stub(hdiutil, ": > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    startTo(folder.path(QStringLiteral("empty.iso")));
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(TestFolder::read(folder.path(QStringLiteral("disc.iso/precious"))),
              QByteArray("kept"));
    EXPECT_TRUE(QDir(folder.path(QStringLiteral("empty.iso"))).exists());
}

TEST_F(ISORipperCancelTest, ALinkAtTheDestinationGoesAndItsTargetStays) {
    folder.write(QStringLiteral("precious"), "kept");
    QFile::link(folder.path(QStringLiteral("precious")), destination());
    stub(hdiutil, ": > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    EXPECT_FALSE(QFileInfo(destination()).isSymLink());
    EXPECT_EQ(TestFolder::read(folder.path(QStringLiteral("precious"))), QByteArray("kept"));
}

TEST_F(ISORipperCancelTest, TheImageOfARipThatRunsGoesWithTheProgram) {
    stub(hdiutil, "printf part > \"$out\"; : > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    RemovedAtExit::removeAll();
    EXPECT_EQ(temporaryFiles(), QStringList());
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
}

TEST_F(ISORipperCancelTest, TheImageOfAFailedRipOutlivesTheProgram) {
    rip("printf part > \"$out\"; exit 1");
    RemovedAtExit::removeAll();
    EXPECT_EQ(temporaryFiles().size(), 1);
}

TEST_F(ISORipperCancelTest, TheSecondImageOfAVerificationGoesWithTheProgram) {
    stub(hdiutil,
         "printf image > \"$out\"\n[ $pass = rip ] && exit 0\n"
         ": > \"$world/started\"; exec sleep 1000");
    start(true);
    ASSERT_TRUE(waitForFile("started"));
    RemovedAtExit::removeAll();
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
    ASSERT_TRUE(waitUntil([&] { return ripper->trackedVerifyProcesses() == 1; }));
    ripper->cancelVerification();
    ASSERT_TRUE(waitForEnd());
}

TEST_F(ISORipperCancelTest, BeforeTheFirstRipThereIsNothingToCancel) {
    ripper->cancel();
    ripper->cancelVerification();
    EXPECT_EQ(changes->all(), QStringList());
    EXPECT_EQ(StubTools::log(folder), QStringList());
}

TEST_F(ISORipperCancelTest, TheNextRipIsNotCancelled) {
    stub(hdiutil, ": > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel();
    ASSERT_TRUE(waitForEnd());
    rip("printf image > \"$out\"");
    EXPECT_TRUE(ripper->finished());
}

TEST_F(ISORipperCancelTest, AToolThatIsKilledFromOutsideIsAFailureNotACancel) {
    stub(hdiutil, "printf part > \"$out\"; echo $$ > \"$world/pid\"; exec sleep 1000");
    start();
    ASSERT_TRUE(waitUntil([&] { return pidIn("pid") > 0; }));
    kill(pidIn("pid"), SIGKILL);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(asText(ripper->error()), QStringLiteral("imagingFailed: exit code 9"));
    EXPECT_EQ(temporaryFiles().size(), 1);
}

TEST_F(ISORipperCancelTest, OnlyTheFileThatStoodThereGoesWhenThatIsAsked) {
    folder.write(QStringLiteral("disc.iso"), "an older image");
    stub(hdiutil, "printf part > \"$out\"; : > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel(ISORipper::CancelRemoves::WhatStoodThere);
    EXPECT_FALSE(QFile::exists(destination()));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(ISORipperCancelTest, AFileThatCameMeanwhileStaysWhenOnlyTheOldOneIsToGo) {
    for (const bool stood : {false, true}) {
        QFile::remove(destination());
        QFile::remove(folder.path(QStringLiteral("started")));
        if (stood) {
            folder.write(QStringLiteral("disc.iso"), "an older image");
        }
        stub(hdiutil, "printf part > \"$out\"; : > \"$world/started\"; exec sleep 1000");
        startAndWaitFor("started");
        folder.write(QStringLiteral("theirs"), "theirs");
        ASSERT_EQ(::rename(QFile::encodeName(folder.path(QStringLiteral("theirs"))).constData(),
                           QFile::encodeName(destination()).constData()),
                  0);
        ripper->cancel(ISORipper::CancelRemoves::WhatStoodThere);
        ASSERT_TRUE(waitForEnd());
        EXPECT_EQ(TestFolder::read(destination()), QByteArray("theirs")) << stood;
    }
}

TEST_F(ISORipperCancelTest, NothingAtTheDestinationGoesWhenNobodyCancelled) {
    folder.write(QStringLiteral("disc.iso"), "a good image");
    stub(hdiutil, "printf part > \"$out\"; : > \"$world/started\"; exec sleep 1000");
    startAndWaitFor("started");
    ripper->cancel(ISORipper::CancelRemoves::Nothing);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("a good image"));
    EXPECT_EQ(temporaryFiles(), QStringList());
}

}  // namespace
