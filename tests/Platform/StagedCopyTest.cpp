#include "StagedCopy.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cerrno>
#include <future>

#include "AbandonedFiles.h"
#include "SmallFileSystem.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

class StagedCopyTest : public testing::Test {
protected:
    // Runs a copy to its end.
    std::shared_ptr<StagedCopy> copied(const QString& from, const QString& target,
                                       Replacing replacing = Replacing::Yes) {
        auto ended = std::make_shared<std::promise<void>>();
        auto end = ended->get_future();
        auto copy = StagedCopy::begin(from, target, replacing, [ended] { ended->set_value(); });
        end.wait();
        return copy;
    }

    TestFolder folder;
    const QString source = folder.write(QStringLiteral("from/image"), QByteArray(3000007, 'x'));
    const QString to = folder.path(QStringLiteral("to"));
    const QString destination = to + QStringLiteral("/disc.iso");

    void SetUp() override { QDir().mkpath(to); }
};

mode_t modeOf(const QString& path) {
    struct stat status = {};
    EXPECT_EQ(stat(QFile::encodeName(path).constData(), &status), 0);
    return status.st_mode & ALLPERMS;
}

// Of a file that anybody makes here.
mode_t usualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

TEST_F(StagedCopyTest, BeforeTheCommitTheDestinationIsUntouched) {
    folder.write(QStringLiteral("to/disc.iso"), "old");
    const auto copy = copied(source, destination);
    EXPECT_EQ(TestFolder::read(destination), QByteArray("old"));
    EXPECT_EQ(TestFolder::list(to).size(), 2);
}

TEST_F(StagedCopyTest, TheCommitPutsTheWholeCopyInPlaceAndRemovesTheOriginal) {
    QFile::setPermissions(source, QFile::ReadOwner | QFile::WriteOwner);
    folder.write(QStringLiteral("to/disc.iso"), "old");
    const auto copy = copied(source, destination);
    EXPECT_EQ(copy->commit(), 0);
    EXPECT_EQ(TestFolder::read(destination), QByteArray(3000007, 'x'));
    EXPECT_EQ(TestFolder::list(to), QStringList({"disc.iso"}));
    EXPECT_FALSE(QFile::exists(source));
    EXPECT_EQ(modeOf(destination), usualMode());
}

TEST_F(StagedCopyTest, AFileThatCameMeanwhileIsKeptAndSoIsTheOriginal) {
    const auto copy = copied(source, destination, Replacing::No);
    folder.write(QStringLiteral("to/disc.iso"), "came meanwhile");
    EXPECT_EQ(copy->commit(), EEXIST);
    EXPECT_EQ(TestFolder::read(destination), QByteArray("came meanwhile"));
    EXPECT_EQ(TestFolder::list(to), QStringList({"disc.iso"}));
    EXPECT_TRUE(QFile::exists(source));
}

TEST_F(StagedCopyTest, ANewNameIsTakenWithinAFileSystemAndNeverAnOldOne) {
    QFile::setPermissions(source, QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_EQ(moveFile(source, destination, Replacing::No), 0);
    EXPECT_EQ(modeOf(destination), usualMode());
    const QString second = folder.write(QStringLiteral("from/second"), "second");
    EXPECT_EQ(moveFile(second, destination, Replacing::No), EEXIST);
    EXPECT_EQ(TestFolder::read(second), QByteArray("second"));
    ASSERT_EQ(symlink("nothing", QFile::encodeName(to + "/link").constData()), 0);
    EXPECT_EQ(moveFile(second, to + QStringLiteral("/link"), Replacing::No), EEXIST);
    EXPECT_EQ(moveFile(second, destination, Replacing::Yes), 0);
    EXPECT_EQ(TestFolder::read(destination), QByteArray("second"));
}

TEST_F(StagedCopyTest, ADroppedCopyLeavesOnlyTheOriginal) {
    copied(source, destination);
    // The copying thread lets go of it a moment after its callback.
    EXPECT_TRUE(waitUntil([&] { return TestFolder::list(to).isEmpty(); }));
    EXPECT_TRUE(QFile::exists(source));
}

TEST_F(StagedCopyTest, ADiscardedCopyLeavesOnlyTheOriginal) {
    const auto copy = copied(source, destination);
    copy->discard();
    EXPECT_EQ(TestFolder::list(to), QStringList());
    EXPECT_EQ(copy->commit(), ENOENT);
    EXPECT_TRUE(QFile::exists(source));
}

TEST_F(StagedCopyTest, AnOriginalThatIsGoneIsAnError) {
    const auto copy = copied(folder.path(QStringLiteral("from/none")), destination);
    EXPECT_EQ(copy->commit(), ENOENT);
    EXPECT_EQ(TestFolder::list(to), QStringList());
}

TEST_F(StagedCopyTest, AFolderInTheWayKeepsBothItAndTheOriginal) {
    const auto copy = copied(source, destination);
    QDir().mkpath(destination);
    EXPECT_EQ(copy->commit(), EISDIR);
    EXPECT_EQ(TestFolder::list(to), QStringList({"disc.iso"}));
    EXPECT_TRUE(QDir(destination).exists());
    EXPECT_TRUE(QFile::exists(source));
}

TEST_F(StagedCopyTest, AFullDiskIsAnErrorAndLeavesNothingBehind) {
    const SmallFileSystem disk(to, "1m");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    EXPECT_EQ(copied(source, destination)->commit(), ENOSPC);
    EXPECT_EQ(TestFolder::list(to), QStringList());
    EXPECT_TRUE(QFile::exists(source));
}

TEST_F(StagedCopyTest, AFileThatIsReplacedGoesFirstWhereItTakesTheRoomOfTheCopy) {
    const SmallFileSystem disk(to, "4m");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    folder.write(QStringLiteral("to/disc.iso"), QByteArray(2000000, 'o'));
    EXPECT_EQ(copied(source, destination)->commit(), 0);
    EXPECT_EQ(TestFolder::read(destination), QByteArray(3000007, 'x'));
    EXPECT_EQ(TestFolder::list(to), QStringList({"disc.iso"}));
    EXPECT_FALSE(QFile::exists(source));
}

TEST_F(StagedCopyTest, AFileStaysWhenItsRoomWouldNotDoOrItIsNotToBeReplaced) {
    const SmallFileSystem disk(to, "3m");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    const QByteArray old(1000000, 'o');
    folder.write(QStringLiteral("to/disc.iso"), old);
    EXPECT_EQ(copied(source, destination, Replacing::No)->commit(), ENOSPC);
    EXPECT_EQ(TestFolder::read(destination), old);
    ASSERT_EQ(link(QFile::encodeName(destination).constData(),
                   QFile::encodeName(to + QStringLiteral("/second name")).constData()),
              0);
    EXPECT_EQ(copied(source, destination)->commit(), ENOSPC);
    EXPECT_EQ(TestFolder::read(destination), old);
    ASSERT_TRUE(QFile::remove(to + QStringLiteral("/second name")));
    folder.write(QStringLiteral("to/filler"), QByteArray(500000, 'f'));
    EXPECT_EQ(copied(source, destination)->commit(), ENOSPC);
    EXPECT_EQ(TestFolder::read(destination), old);
    EXPECT_EQ(TestFolder::list(to), QStringList({"disc.iso", "filler"}));
}

TEST_F(StagedCopyTest, AFileTooLargeForTheFileSystemIsAnErrorBeforeAnythingIsCopied) {
    // Its files end at 16 GiB, and it is far smaller than that.
    const QString image = folder.write(QStringLiteral("ext2"), QByteArray());
    ASSERT_TRUE(QFile::resize(image, 4 << 20));
    const QString mount =
        QStringLiteral("mke2fs -q -F -t ext2 -b 1024 \"$0\" && mount -o loop \"$0\" \"$1\"");
    if (QProcess::execute(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), mount, image, to}) !=
        0) {
        GTEST_SKIP() << "mounting a file system needs root and loop devices";
    }
    ASSERT_TRUE(QFile::resize(source, qint64(1) << 40));
    EXPECT_EQ(copied(source, destination)->commit(), EFBIG);
    EXPECT_EQ(TestFolder::list(to), QStringList({"lost+found"}));
    EXPECT_EQ(umount2(QFile::encodeName(to).constData(), MNT_DETACH), 0);
}

TEST_F(StagedCopyTest, AnOriginalThatEndsBeforeItsSizeIsAnError) {
    // As one does that somebody cuts off while it is copied.
    const QString cut = QStringLiteral("/sys/kernel/uevent_seqnum");
    ASSERT_GT(QFileInfo(cut).size(), 100);
    EXPECT_EQ(copied(cut, destination)->commit(), EIO);
    EXPECT_EQ(TestFolder::list(to), QStringList());
}

TEST_F(StagedCopyTest, ACancelTouchesNothingAndTheCopyIsGoneBeforeTheCallback) {
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QStringList leftAtTheEnd;
    std::promise<void> ended;
    const auto copy = StagedCopy::begin(fifo, destination, Replacing::Yes, [&] {
        leftAtTheEnd = TestFolder::list(to);
        ended.set_value();
    });
    {
        QFile feed(fifo);
        ASSERT_TRUE(feed.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        ASSERT_TRUE(waitUntil([&] { return TestFolder::list(to).size() == 1; }));
        copy->cancel();
        // The file system may be busy with the copy: the main thread must not wait for it.
        EXPECT_EQ(TestFolder::list(to).size(), 1);
    }
    ended.get_future().wait();
    EXPECT_EQ(leftAtTheEnd, QStringList());
    EXPECT_EQ(copy->commit(), ECANCELED);
}

TEST_F(StagedCopyTest, ACopyThatRunsIsClaimed) {
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    std::promise<void> ended;
    const auto copy =
        StagedCopy::begin(fifo, destination, Replacing::Yes, [&] { ended.set_value(); });
    {
        QFile feed(fifo);
        ASSERT_TRUE(feed.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        ASSERT_TRUE(waitUntil([&] { return TestFolder::list(to).size() == 1; }));
        EXPECT_TRUE(waitUntil([&] {
            return AbandonedFiles::unclaimed(to, {".spindrift-", ".part"}).isEmpty();
        }));
    }
    ended.get_future().wait();
    EXPECT_EQ(copy->commit(), 0);
}

TEST_F(StagedCopyTest, WhatAKilledProgramLeftGoesWhenTheNextCopyBegins) {
    const QString left = folder.write(
        QStringLiteral("to/.spindrift-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D.part"), "half");
    QFile file(left);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addDays(-1),
                                 QFileDevice::FileModificationTime));
    file.close();
    EXPECT_EQ(copied(source, destination)->commit(), 0);
    EXPECT_EQ(TestFolder::list(to), QStringList({"disc.iso"}));
}

TEST(MoveFileTest, AnotherFileSystemIsAnErrorOfItsOwn) {
    const TestFolder folder;
    const QString source = folder.write(QStringLiteral("a"), "a");
    EXPECT_EQ(moveFile(source, QStringLiteral("/proc/none-such"), Replacing::Yes), EXDEV);
    EXPECT_TRUE(QFile::exists(source));
}

}  // namespace
