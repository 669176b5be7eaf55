#include "StagedCopy.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cerrno>
#include <future>

#include "TestFolder.h"
#include "Waiting.h"

namespace {

class StagedCopyTest : public testing::Test {
protected:
    // Runs a copy to its end.
    std::shared_ptr<StagedCopy> copied(const QString& from, const QString& target) {
        auto ended = std::make_shared<std::promise<void>>();
        auto end = ended->get_future();
        auto copy = StagedCopy::begin(from, target, [ended] { ended->set_value(); });
        end.wait();
        return copy;
    }

    TestFolder folder;
    const QString source = folder.write(QStringLiteral("from/image"), QByteArray(3000007, 'x'));
    const QString to = folder.path(QStringLiteral("to"));
    const QString destination = to + QStringLiteral("/disc.iso");

    void SetUp() override { QDir().mkpath(to); }
};

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
    struct stat status = {};
    ASSERT_EQ(stat(QFile::encodeName(destination).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & ALLPERMS, 0600U);
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
    if (mount("none", QFile::encodeName(to).constData(), "tmpfs", 0, "size=1m") != 0) {
        GTEST_SKIP() << "mounting a small file system needs root";
    }
    EXPECT_EQ(copied(source, destination)->commit(), ENOSPC);
    EXPECT_EQ(TestFolder::list(to), QStringList());
    EXPECT_TRUE(QFile::exists(source));
    // Lazily: the copying thread may close its file a moment after its callback.
    EXPECT_EQ(umount2(QFile::encodeName(to).constData(), MNT_DETACH), 0);
}

TEST(MoveFileTest, AnotherFileSystemIsAnErrorOfItsOwn) {
    const TestFolder folder;
    const QString source = folder.write(QStringLiteral("a"), "a");
    EXPECT_EQ(moveFile(source, QStringLiteral("/proc/none-such")), EXDEV);
    EXPECT_TRUE(QFile::exists(source));
}

}  // namespace
