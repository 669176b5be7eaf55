// Putting the finished image in its place.
#include <sys/time.h>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include "BackgroundThread.h"
#include "OrdinaryUser.h"
#include "OtherFileSystem.h"
#include "RipperTest.h"
#include "SmallFileSystem.h"

namespace {

class ISORipperMoveTest : public RipperTest {
protected:
    static constexpr const char* image = "printf image > \"$out\"";

    void ripTo(const QString& path) {
        stub(hdiutil, image);
        startTo(path);
        ASSERT_TRUE(waitForEnd());
    }
};

TEST_F(ISORipperMoveTest, AFileAtTheDestinationIsReplaced) {
    folder.write(QStringLiteral("disc.iso"), "a longer, older image");
    rip(image);
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
    EXPECT_TRUE(ripper->finished());
    EXPECT_EQ(ripper->bytesWritten(), 5);
}

TEST_F(ISORipperMoveTest, AMissingFolderGivesTheDoubledPrefix) {
    ripTo(folder.path(QStringLiteral("none/such/disc.iso")));
    EXPECT_EQ(changes->all(),
              QStringList({"isRunning=true", "isRunning=false",
                           "error=imagingFailed: Could not move image into place: No such file or "
                           "directory"}));
    EXPECT_EQ(ripper->error()->errorDescription(),
              QStringLiteral("hdiutil exited with an error: Could not move image into place: No "
                             "such file or directory"));
}

TEST_F(ISORipperMoveTest, TheTemporaryImageStaysWhenItCannotBeMoved) {
    ripTo(folder.path(QStringLiteral("none/disc.iso")));
    ASSERT_EQ(temporaryFiles().size(), 1);
    EXPECT_EQ(TestFolder::read(temporaryImage()), QByteArray("image"));
}

TEST_F(ISORipperMoveTest, AFolderAtTheDestinationIsNeverReplaced) {
    folder.write(QStringLiteral("disc.iso/precious"), "kept");
    rip(image);
    EXPECT_EQ(asText(ripper->error()),
              QStringLiteral("imagingFailed: Could not move image into place: Is a directory"));
    EXPECT_EQ(TestFolder::read(folder.path(QStringLiteral("disc.iso/precious"))),
              QByteArray("kept"));
    EXPECT_EQ(temporaryFiles().size(), 1);
}

TEST_F(ISORipperMoveTest, AnEmptyFolderAtTheDestinationIsNotReplacedEither) {
    QDir().mkpath(destination());
    rip(image);
    EXPECT_EQ(asText(ripper->error()),
              QStringLiteral("imagingFailed: Could not move image into place: Is a directory"));
    EXPECT_TRUE(QDir(destination()).exists());
}

TEST_F(ISORipperMoveTest, ALinkAtTheDestinationIsReplacedAndItsTargetStays) {
    folder.write(QStringLiteral("precious"), "kept");
    QFile::link(folder.path(QStringLiteral("precious")), destination());
    rip(image);
    EXPECT_FALSE(QFileInfo(destination()).isSymLink());
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
    EXPECT_EQ(TestFolder::read(folder.path(QStringLiteral("precious"))), QByteArray("kept"));
}

TEST_F(ISORipperMoveTest, ADanglingLinkAtTheDestinationIsReplaced) {
    QFile::link(folder.path(QStringLiteral("none/such")), destination());
    rip(image);
    EXPECT_TRUE(ripper->finished());
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
}

TEST_F(ISORipperMoveTest, OddNamesAreTakenAsTheyAre) {
    for (const char* name :
         {"two words.iso", " .iso", "-o.iso", "--help", "a\nb.iso", "q'\"`$(x).iso", "*.iso",
          "#%.iso", "\xC3\xA4\xE6\x97\xA5\xF0\x9F\x92\xBF.iso", "e\xCC\x81.iso", "back\\slash.iso",
          "tab\t.iso"}) {
        ripTo(folder.path(QString::fromUtf8(name)));
        EXPECT_TRUE(ripper->finished()) << name;
        EXPECT_EQ(TestFolder::read(folder.path(QString::fromUtf8(name))), QByteArray("image"))
            << name;
    }
}

TEST_F(ISORipperMoveTest, ANameThatIsTooLongIsAMoveError) {
    ripTo(folder.path(QString(300, u'x')));
    EXPECT_EQ(asText(ripper->error()),
              QStringLiteral("imagingFailed: Could not move image into place: File name too long"));
}

TEST_F(ISORipperMoveTest, AFileThatCannotBeReplacedIsAMoveErrorAndNoMissingPermission) {
    const QString closed = folder.path(QStringLiteral("closed"));
    const QString old = folder.write(QStringLiteral("closed/disc.iso"), "old");
    ASSERT_EQ(chmod(QFile::encodeName(closed).constData(), 0500), 0);
    {
        stub(hdiutil, image);
        const OrdinaryUser user({folder.path(), folder.temporary(), folder.toolRoot(),
                                 folder.toolRoot() + QLatin1String(hdiutil), closed});
        startTo(old);
        EXPECT_TRUE(waitForEnd());
    }
    EXPECT_EQ(asText(ripper->error()),
              QStringLiteral("imagingFailed: Could not move image into place: Permission denied"));
    EXPECT_EQ(TestFolder::read(old), QByteArray("old"));
    EXPECT_EQ(temporaryFiles().size(), 1);
    ASSERT_EQ(chmod(QFile::encodeName(closed).constData(), 0700), 0);
}

TEST_F(ISORipperMoveTest, APipeAtTheDestinationIsReplacedWithoutWaitingForItsReader) {
    ASSERT_EQ(mkfifo(QFile::encodeName(destination()).constData(), 0600), 0);
    rip(image);
    EXPECT_TRUE(ripper->finished());
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("image"));
}

TEST_F(ISORipperMoveTest, WhereOnlyTheDestinationHasRoomBothTemporaryImagesAreMadeThere) {
    const QString small = folder.path(QStringLiteral("small"));
    QDir().mkpath(small);
    const SmallFileSystem disk(small, "64k");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    folder.setEnvironment("TMPDIR", small.toUtf8());
    stub(hdiutil,
         "echo \"$out\" >> \"$world/paths\"\n"
         "head -c 100000 /dev/zero > \"$out\"");
    ripper->start(QStringLiteral("disk4"), destination(), 100000, true);
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(ripper->finished());
    EXPECT_EQ(ripper->verifyStatus(), VerifyStatus::matched());
    const QList<QByteArray> paths =
        TestFolder::read(folder.path(QStringLiteral("paths")))->trimmed().split('\n');
    ASSERT_EQ(paths.size(), 2);
    EXPECT_TRUE(paths[0].startsWith(folder.path(QStringLiteral("spindrift-")).toUtf8()));
    EXPECT_TRUE(paths[1].startsWith(folder.path(QStringLiteral("spindrift-verify-")).toUtf8()));
    EXPECT_TRUE(QDir(folder.path()).entryList({QStringLiteral("spindrift-*")}).isEmpty());
}

TEST_F(ISORipperMoveTest, WithinOneFileSystemTheImageItselfMoves) {
    stub(hdiutil, "printf image > \"$out\"; stat -c %i \"$out\" > \"$world/inode\"");
    start();
    ASSERT_TRUE(waitForEnd());
    struct stat moved = {};
    ASSERT_EQ(stat(QFile::encodeName(destination()).constData(), &moved), 0);
    EXPECT_EQ(QByteArray::number(qulonglong(moved.st_ino)),
              TestFolder::read(folder.path(QStringLiteral("inode")))->trimmed());
}

class ISORipperFarMoveTest : public ISORipperMoveTest {
protected:
    // An image whose copying waits until somebody opens it for writing.
    static constexpr const char* waitingImage = "mkfifo \"$out\"; echo \"$out\" > \"$world/fifo\"";

    // The tool has ended and the copy has begun: nothing is published yet, but the timer is gone.
    bool waitForCopy() {
        return waitUntil([&] { return ripper->isRunning() && !ripper->findChild<QTimer*>(); });
    }
    void startWaitingCopy() {
        stub(hdiutil, waitingImage);
        startTo(other.path("disc.iso"));
        ASSERT_TRUE(waitForCopy());
    }
    QString fifoPath() const {
        return QString::fromUtf8(TestFolder::read(folder.path(QStringLiteral("fifo")))->trimmed());
    }
    // Lets the copy go on: it reads this and then the end.
    void feed(const QByteArray& content) const {
        QFile fifo(fifoPath());
        ASSERT_TRUE(fifo.open(QIODevice::WriteOnly));
        fifo.write(content);
    }

    const OtherFileSystem other{folder};
};

TEST_F(ISORipperFarMoveTest, TheImageIsCopiedAndTheTemporaryOneGoes) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    stub(hdiutil, "head -c 5000001 /dev/urandom > \"$out\"; cp \"$out\" \"$world/expected\"");
    startTo(other.path("disc.iso"));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(TestFolder::read(other.path("disc.iso")),
              TestFolder::read(folder.path(QStringLiteral("expected"))));
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_EQ(TestFolder::list(other.path()), QStringList({"disc.iso"}));
}

TEST_F(ISORipperFarMoveTest, AllThatIsPublishedComesTogetherAfterTheCopy) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    startWaitingCopy();
    EXPECT_EQ(changes->all(), QStringList({"isRunning=true"}));
    bool anotherTurn = false;
    QObject::connect(ripper.get(), &ISORipper::isRunningChanged, ripper.get(), [&] {
        EXPECT_TRUE(QFile::exists(other.path("disc.iso")));
        QMetaObject::invokeMethod(
            ripper.get(), [&] { anotherTurn = true; }, Qt::QueuedConnection);
    });
    QObject::connect(ripper.get(), &ISORipper::verifyStatusChanged, ripper.get(),
                     [&] { EXPECT_FALSE(anotherTurn); });
    feed("image");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->all(),
              QStringList({"isRunning=true", "isRunning=false", "bytesWritten=5", "progress=1",
                           "finished=true", "lastRipAverageBytesPerSecond=present",
                           "verifyStatus=matched"}));
}

TEST_F(ISORipperFarMoveTest, TheAverageCountsTheTimeOfTheCopy) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    using Clock = ISORipper::Clock;
    const auto beforeStart = Clock::now();
    startWaitingCopy();
    const auto copying = Clock::now();
    // The copy takes longer than the tool did.
    ASSERT_TRUE(waitUntil([&] { return Clock::now() - copying > copying - beforeStart; }));
    const std::chrono::duration<double> least = Clock::now() - copying;
    feed("image");
    ASSERT_TRUE(waitForEnd());
    ASSERT_TRUE(ripper->lastRipAverageBytesPerSecond());
    EXPECT_LE(*ripper->lastRipAverageBytesPerSecond(), 5 / least.count());
}

TEST_F(ISORipperFarMoveTest, AFileAtTheDestinationIsReplacedOnlyByAWholeCopy) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    QFile old(other.path("disc.iso"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    startWaitingCopy();
    EXPECT_EQ(TestFolder::read(other.path("disc.iso")), QByteArray("old"));
    feed("image");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(TestFolder::read(other.path("disc.iso")), QByteArray("image"));
}

TEST_F(ISORipperFarMoveTest, ACancelEndsTheCopyAndLeavesNothing) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    startWaitingCopy();
    ripper->cancel();
    EXPECT_TRUE(ripper->isRunning());
    feed("");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->all(), QStringList({"isRunning=true", "isRunning=false"}));
    EXPECT_EQ(TestFolder::list(other.path()), QStringList());
    EXPECT_EQ(temporaryFiles(), QStringList());
    EXPECT_EQ(runs("pkill"), QStringList());
}

TEST_F(ISORipperFarMoveTest, ACancelLeavesTheCopyToTheThreadThatWritesIt) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    startWaitingCopy();
    {
        QFile fifo(fifoPath());
        ASSERT_TRUE(fifo.open(QIODevice::WriteOnly));
        ASSERT_TRUE(waitUntil([&] { return TestFolder::list(other.path()).size() == 1; }));
        ripper->cancel();
        EXPECT_EQ(TestFolder::list(other.path()).size(), 1);
    }
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(TestFolder::list(other.path()), QStringList());
}

TEST_F(ISORipperFarMoveTest, ADiscardedEngineLeavesNothingAtTheDestination) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    startWaitingCopy();
    ripper.reset();
    feed("");
    EXPECT_TRUE(BackgroundThread::waitForPassing(std::chrono::minutes(1)));
    EXPECT_EQ(TestFolder::list(other.path()), QStringList());
    EXPECT_EQ(temporaryFiles().size(), 1);
}

TEST_F(ISORipperFarMoveTest, TheTemporaryImageStaysWhenItCannotBeCopied) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    ripTo(other.path("none/disc.iso"));
    EXPECT_EQ(asText(ripper->error()),
              QStringLiteral("imagingFailed: Could not move image into place: No such file or "
                             "directory"));
    EXPECT_EQ(TestFolder::read(temporaryImage()), QByteArray("image"));
    EXPECT_EQ(TestFolder::list(other.path()), QStringList());
}

TEST_F(ISORipperFarMoveTest, AFullDiskThereKeepsWhatStoodThereAndTheTemporaryImage) {
    const QString small = folder.path(QStringLiteral("small"));
    QDir().mkpath(small);
    const SmallFileSystem disk(small, "64k");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    folder.write(QStringLiteral("small/disc.iso"), "old");
    stub(hdiutil, "head -c 100000 /dev/zero > \"$out\"");
    startTo(small + QStringLiteral("/disc.iso"));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(asText(ripper->error()),
              QStringLiteral("imagingFailed: Could not move image into place: No space left on "
                             "device"));
    EXPECT_EQ(TestFolder::list(small), QStringList({"disc.iso"}));
    EXPECT_EQ(TestFolder::read(folder.path(QStringLiteral("small/disc.iso"))), QByteArray("old"));
    EXPECT_EQ(temporaryFiles().size(), 1);
}

TEST_F(ISORipperFarMoveTest, ACancelAfterTheWholeCopyLeavesNothingEither) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    startWaitingCopy();
    feed("image");
    // The copying thread has said that it is done, and the main thread has not heard it yet.
    ASSERT_TRUE(BackgroundThread::waitForPassing(std::chrono::minutes(1)));
    EXPECT_TRUE(ripper->isRunning());
    ripper->cancel();
    QStringList leftAtTheEnd = {QStringLiteral("not told")};
    QObject::connect(ripper.get(), &ISORipper::isRunningChanged, ripper.get(),
                     [&] { leftAtTheEnd = TestFolder::list(other.path()); });
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(changes->all(), QStringList({"isRunning=true", "isRunning=false"}));
    EXPECT_EQ(leftAtTheEnd, QStringList());
    EXPECT_EQ(temporaryFiles(), QStringList());
}

TEST_F(ISORipperFarMoveTest, AFolderThereIsNotReplacedAndNothingIsCopied) {
    NEEDS_ANOTHER_FILE_SYSTEM(other);
    QDir().mkpath(other.path("disc.iso/precious"));
    const timeval longAgo[2] = {{1000, 0}, {1000, 0}};
    ASSERT_EQ(utimes(QFile::encodeName(other.path()).constData(), longAgo), 0);
    ripTo(other.path("disc.iso"));
    EXPECT_EQ(asText(ripper->error()),
              QStringLiteral("imagingFailed: Could not move image into place: Is a directory"));
    EXPECT_TRUE(QDir(other.path("disc.iso/precious")).exists());
    // A copy that had begun would have changed the folder around it.
    EXPECT_EQ(QFileInfo(other.path()).lastModified().toSecsSinceEpoch(), 1000);
    EXPECT_EQ(temporaryFiles().size(), 1);
}

TEST_F(ISORipperMoveTest, WithoutLeaveToReplaceAFileThatCameMeanwhileStaysAndSoDoesTheImage) {
    stub(hdiutil, "printf image > \"$out\"; printf theirs > \"$world/disc.iso\"");
    ripper->start(QStringLiteral("disk4"), destination(), std::nullopt, false, Replacing::No);
    ASSERT_TRUE(waitForEnd());
    ASSERT_TRUE(ripper->error());
    EXPECT_EQ(ripper->error()->errorDescription(),
              QStringLiteral("hdiutil exited with an error: Could not move image into place: File "
                             "exists"));
    EXPECT_EQ(TestFolder::read(destination()), QByteArray("theirs"));
    EXPECT_EQ(TestFolder::read(temporaryImage()), QByteArray("image"));
}

TEST_F(ISORipperMoveTest, WhatTheToolRemarksOnAGoodDiscIsKept) {
    rip("printf image > \"$out\"; printf 'hdiutil: too short\\n\\n  odd \\n' >&2");
    EXPECT_TRUE(ripper->finished());
    EXPECT_EQ(ripper->remarks(), QStringList({"too short", "odd"}));
    rip(image);
    EXPECT_EQ(ripper->remarks(), QStringList());
}

TEST_F(ISORipperMoveTest, ARipThatFailsHasAnErrorAndNoRemarks) {
    rip("printf image > \"$out\"; echo hdiutil: bad >&2; exit 1");
    EXPECT_EQ(ripper->remarks(), QStringList());
    stub(hdiutil, "printf image > \"$out\"; echo hdiutil: odd >&2");
    startTo(folder.path(QStringLiteral("none/disc.iso")));
    ASSERT_TRUE(waitForEnd());
    EXPECT_TRUE(ripper->error());
    EXPECT_EQ(ripper->remarks(), QStringList());
}

}  // namespace
