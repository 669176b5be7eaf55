#include "FileRemoval.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "TestFolder.h"
#include "Waiting.h"

namespace {

class FileRemovalTest : public testing::Test {
protected:
    QString large() {
        const QString path = folder.write(QStringLiteral("large"), "x");
        EXPECT_TRUE(QFile::resize(path, 100 * 1024 * 1024));
        return path;
    }
    static int openDescriptors() {
        return static_cast<int>(
            QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System).size());
    }

    TestFolder folder;
};

TEST_F(FileRemovalTest, ASmallFileIsGone) {
    const QString path = folder.write(QStringLiteral("small"), "x");
    EXPECT_EQ(FileRemoval::remove(path), 0);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(FileRemovalTest, ALargeFilesNameIsGoneAtOnceAndItsContentSoon) {
    const QString path = large();
    const int before = openDescriptors();
    EXPECT_EQ(FileRemoval::remove(path), 0);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() <= before; }));
}

TEST_F(FileRemovalTest, ASmallFileWithMuchSpaceReservedIsALargeOne) {
    const QString path = folder.write(QStringLiteral("reserved"), "x");
    EXPECT_FALSE(FileRemoval::hold(path).isOpen());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    if (fallocate(file.handle(), FALLOC_FL_KEEP_SIZE, 0, 100 * 1024 * 1024) != 0) {
        GTEST_SKIP() << "this file system reserves no space";
    }
    EXPECT_EQ(QFileInfo(path).size(), 1);
    EXPECT_TRUE(FileRemoval::hold(path).isOpen());
}

TEST_F(FileRemovalTest, WhatGoesToTheTrashCanBeHadBack) {
    const QString path = folder.write(QStringLiteral("disc.iso"), "image");
    EXPECT_EQ(FileRemoval::moveToTrash(path), 0);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(TestFolder::read(folder.path(QStringLiteral("data/Trash/files/disc.iso"))),
              QByteArray("image"));
}

TEST_F(FileRemovalTest, WithoutATrashAFileIsRemoved) {
    const QString path = folder.write(QStringLiteral("disc.iso"), "image");
    folder.write(QStringLiteral("data/Trash"), "no folder");
    EXPECT_EQ(FileRemoval::moveToTrash(path), 0);
    EXPECT_FALSE(QFile::exists(path));
    folder.setEnvironment("XDG_DATA_HOME", "/proc/none");
    folder.write(QStringLiteral("disc.iso"), "image");
    EXPECT_EQ(FileRemoval::moveToTrash(path), 0);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(FileRemovalTest, AFolderNeverGoesToTheTrash) {
    EXPECT_NE(FileRemoval::moveToTrash(folder.path(QStringLiteral("home"))), 0);
    EXPECT_TRUE(QFile::exists(folder.path(QStringLiteral("home"))));
}

TEST_F(FileRemovalTest, OfALinkOnlyTheLinkGoes) {
    const QString target = folder.write(QStringLiteral("target"), "image");
    const QString link = folder.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(target, link));
    EXPECT_EQ(FileRemoval::moveToTrash(link), 0);
    EXPECT_FALSE(QFileInfo(link).isSymLink());
    EXPECT_EQ(TestFolder::read(target), QByteArray("image"));
}

TEST_F(FileRemovalTest, WhatIsHeldIsNeitherReadNorWritten) {
    const Descriptor content = FileRemoval::hold(large());
    ASSERT_TRUE(content.isOpen());
    EXPECT_EQ(fcntl(content.number(), F_GETFL) & O_PATH, O_PATH);
}

TEST_F(FileRemovalTest, AMissingFileIsAnError) {
    EXPECT_EQ(FileRemoval::remove(folder.path(QStringLiteral("nothing"))), ENOENT);
}

TEST_F(FileRemovalTest, AFolderIsNeverRemoved) {
    const QString path = folder.path(QStringLiteral("folder"));
    QDir().mkdir(path);
    EXPECT_NE(FileRemoval::remove(path), 0);
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(FileRemovalTest, ALinkIsRemovedAndItsTargetStays) {
    const QString target = large();
    const QString link = folder.path(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(target, link));
    EXPECT_EQ(FileRemoval::remove(link), 0);
    EXPECT_TRUE(QFile::exists(target));
    EXPECT_FALSE(QFile::exists(link));
}

TEST_F(FileRemovalTest, APipeIsRemovedWithoutWaitingForAWriter) {
    const QString path = folder.path(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_EQ(FileRemoval::remove(path), 0);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(FileRemovalTest, AHeldFileOutlivesItsReplacement) {
    const QString path = large();
    Descriptor content = FileRemoval::hold(path);
    ASSERT_TRUE(content.isOpen());
    const QString next = folder.write(QStringLiteral("next"), "new");
    ASSERT_EQ(rename(QFile::encodeName(next).constData(), QFile::encodeName(path).constData()), 0);
    QFile held(QStringLiteral("/proc/self/fd/%1").arg(content.number()));
    ASSERT_TRUE(held.open(QIODevice::ReadOnly));
    EXPECT_EQ(held.read(1), QByteArray("x"));
    held.close();
    FileRemoval::release(std::move(content));
    EXPECT_EQ(TestFolder::read(path), QByteArray("new"));
}

}  // namespace
