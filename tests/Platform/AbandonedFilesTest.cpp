#include "AbandonedFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include "Descriptor.h"
#include "TestFolder.h"
#include "UserFolders.h"

namespace {

class AbandonedFilesTest : public testing::Test {
protected:
    // A file that was last written to so many seconds ago.
    QString write(const QString& name, time_t age) const {
        const QString path = folder.write(u"place/" + name, "half");
        makeOlder(path, age);
        return path;
    }
    QString writeCopy(time_t age) const { return write(freshName(), age); }
    QString freshName() const {
        return copies.prefix + UserFolders::freshIdentifier() + copies.suffix;
    }
    static void makeOlder(const QString& path, time_t age) {
        const timespec then = {time(nullptr) - age, 0};
        const timespec times[2] = {then, then};
        EXPECT_EQ(
            utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW),
            0);
    }
    QStringList left() const {
        AbandonedFiles::removeFrom(place, copies);
        return TestFolder::list(place);
    }

    TestFolder folder;
    const QString place = folder.path(QStringLiteral("place"));
    const AbandonedFiles::Names copies = {".spindrift-", ".part"};
    static constexpr time_t day = 24 * 3600;
};

TEST_F(AbandonedFilesTest, AnOldCopyThatNobodyWritesGoes) {
    writeCopy(day);
    writeCopy(3700);
    EXPECT_EQ(left(), QStringList());
}

TEST_F(AbandonedFilesTest, ACopyThatWasWrittenToWithinTheHourStays) {
    writeCopy(0);
    writeCopy(3500);
    writeCopy(-day);
    EXPECT_EQ(left().size(), 3);
}

TEST_F(AbandonedFilesTest, AClaimedCopyStaysHoweverOldUntilItsWriterIsGone) {
    const QString path = writeCopy(day);
    {
        const Descriptor writer(open(QFile::encodeName(path).constData(), O_WRONLY | O_CLOEXEC));
        ASSERT_TRUE(writer.isOpen());
        AbandonedFiles::claim(writer.number());
        EXPECT_EQ(left().size(), 1);
    }
    EXPECT_EQ(left(), QStringList());
}

TEST_F(AbandonedFilesTest, ACopyThatIsOnlyReadIsNeededToo) {
    const QString path = writeCopy(day);
    {
        const Descriptor reader(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
        AbandonedFiles::claim(reader.number());
        EXPECT_EQ(AbandonedFiles::unclaimed(place, copies), QStringList());
        EXPECT_EQ(AbandonedFiles::remove(path), EBUSY);
        EXPECT_TRUE(QFile::exists(path));
    }
    EXPECT_EQ(AbandonedFiles::unclaimed(place, copies), QStringList(path));
    EXPECT_EQ(AbandonedFiles::remove(path), 0);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(AbandonedFilesTest, WhatNobodyClaimsIsToldNewestFirst) {
    const QString older = writeCopy(2 * day);
    const QString newer = writeCopy(0);
    EXPECT_EQ(AbandonedFiles::unclaimed(place, copies), QStringList({newer, older}));
}

TEST_F(AbandonedFilesTest, FilesWithOtherNamesStay) {
    const QStringList names = {".spindrift-.part",
                               ".spindrift-holiday.part",
                               ".spindrift-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D.part2",
                               ".spindrift-0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d.part",
                               ".spindrift-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D.part\n",
                               "disc.iso",
                               "spindrift-0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D.part"};
    for (const QString& name : names) {
        write(name, day);
    }
    EXPECT_EQ(left().size(), names.size());
}

TEST_F(AbandonedFilesTest, WhatIsNoFileStays) {
    const QString target = write(QStringLiteral("precious"), day);
    const QString link = folder.path(u"place/" + freshName());
    ASSERT_TRUE(QFile::link(target, link));
    const QString inside = folder.path(u"place/" + freshName());
    ASSERT_TRUE(QDir().mkdir(inside));
    const QString pipe = folder.path(u"place/" + freshName());
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& path : {link, inside, pipe}) {
        makeOlder(path, day);
    }
    EXPECT_EQ(left().size(), 4);
    EXPECT_EQ(TestFolder::read(target), QByteArray("half"));
}

TEST_F(AbandonedFilesTest, AnotherUsersCopyStays) {
    const QString path = writeCopy(day);
    if (chown(QFile::encodeName(path).constData(), geteuid() + 1, gid_t(-1)) != 0) {
        GTEST_SKIP() << "giving a file away needs root";
    }
    EXPECT_EQ(left().size(), 1);
}

TEST_F(AbandonedFilesTest, AMissingFolderIsPassedOver) {
    AbandonedFiles::removeFrom(folder.path(QStringLiteral("none")), copies);
    EXPECT_FALSE(QFile::exists(folder.path(QStringLiteral("none"))));
}

}  // namespace
