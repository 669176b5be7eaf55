#include "SettingsFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cerrno>
#include <utility>

#include "OrdinaryUser.h"
#include "TestFolder.h"

namespace {

using testing::ElementsAre;

class SettingsFileTest : public testing::Test {
protected:
    // The mode of a file, as in chmod.
    static mode_t mode(const QString& path) {
        struct stat status = {};
        EXPECT_EQ(stat(QFile::encodeName(path).constData(), &status), 0);
        return status.st_mode & ALLPERMS;
    }

    static int setOn(const QString& path) { return SettingsFile::update(path, {{"key", "true"}}); }

    TestFolder folder;
    QString file = folder.path(QStringLiteral("settings/a.conf"));
};

TEST_F(SettingsFileTest, AMissingFileIsEmptyAndIsMadeWithItsFolders) {
    EXPECT_EQ(SettingsFile::read(file), QByteArray());
    EXPECT_EQ(setOn(file), 0);
    EXPECT_EQ(SettingsFile::read(file), QByteArray("[General]\nkey=true\n"));
    EXPECT_THAT(TestFolder::list(folder.path(QStringLiteral("settings"))),
                ElementsAre(u".Spindrift.lock", u"a.conf"));
}

TEST_F(SettingsFileTest, WhatOthersWroteStaysByteForByteWithTheModeOfTheFile) {
    folder.write(QStringLiteral("settings/a.conf"), "; mine\n[x]\nb = 1\r\n[General]\nkey=0\nz=\"");
    ASSERT_EQ(chmod(QFile::encodeName(file).constData(), 0640), 0);
    EXPECT_EQ(setOn(file), 0);
    EXPECT_EQ(TestFolder::read(file),
              QByteArray("; mine\n[x]\nb = 1\r\n[General]\nkey=true\nz=\""));
    EXPECT_EQ(mode(file), mode_t(0640));
}

TEST_F(SettingsFileTest, ALinkStaysAndItsTargetIsReplaced) {
    const QString target = folder.write(QStringLiteral("dotfiles/real.conf"), "[General]\nz=1\n");
    ASSERT_TRUE(QDir().mkpath(folder.path(QStringLiteral("settings"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("../dotfiles/link"), file));
    ASSERT_TRUE(
        QFile::link(QStringLiteral("real.conf"), folder.path(QStringLiteral("dotfiles/link"))));
    EXPECT_EQ(setOn(file), 0);
    EXPECT_EQ(TestFolder::read(target), QByteArray("[General]\nz=1\nkey=true\n"));
    EXPECT_TRUE(QFileInfo(file).isSymLink());
    EXPECT_TRUE(QFileInfo(folder.path(QStringLiteral("dotfiles/link"))).isSymLink());
    // One that leads nowhere yet, too.
    ASSERT_TRUE(QFile::remove(target));
    EXPECT_EQ(setOn(file), 0);
    EXPECT_EQ(TestFolder::read(target), QByteArray("[General]\nkey=true\n"));
    EXPECT_TRUE(QFileInfo(file).isSymLink());
}

TEST_F(SettingsFileTest, AFileThatMayNotBeReadIsNotReplaced) {
    folder.write(QStringLiteral("settings/a.conf"), "[General]\nz=1\n");
    {
        const OrdinaryUser user({folder.path(), folder.path(QStringLiteral("settings")), file});
        ASSERT_EQ(chmod(QFile::encodeName(file).constData(), 0), 0);
        EXPECT_EQ(SettingsFile::read(file), std::nullopt);
        EXPECT_EQ(setOn(file), EACCES);
        ASSERT_EQ(chmod(QFile::encodeName(file).constData(), 0600), 0);
    }
    EXPECT_EQ(TestFolder::read(file), QByteArray("[General]\nz=1\n"));
}

TEST_F(SettingsFileTest, AReadingThatFailsIsNoEmptyFile) {
    ASSERT_TRUE(QDir().mkpath(folder.path(QStringLiteral("settings"))));
    // Its first page belongs to nobody.
    ASSERT_TRUE(QFile::link(QStringLiteral("/proc/self/mem"), file));
    EXPECT_EQ(SettingsFile::read(file), std::nullopt);
    EXPECT_EQ(setOn(file), EIO);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), file));
    EXPECT_EQ(setOn(file), EINVAL);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QFile::link(QStringLiteral("a.conf"), file));
    EXPECT_EQ(setOn(file), ELOOP);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QDir().mkpath(file));
    EXPECT_EQ(setOn(file), EISDIR);
}

TEST_F(SettingsFileTest, ALinkIntoAMissingFolderIsAnErrorAndStays) {
    folder.write(QStringLiteral("settings/a.conf"), "[General]\nz=1\n");
    const QString target = folder.path(QStringLiteral("settings/a.conf"));
    ASSERT_TRUE(QFile::rename(target, folder.path(QStringLiteral("z"))));
    ASSERT_TRUE(QFile::link(QStringLiteral("../no/folder/a.conf"), target));
    EXPECT_EQ(setOn(file), ENOENT);
    EXPECT_THAT(TestFolder::list(folder.path(QStringLiteral("settings"))),
                ElementsAre(u".Spindrift.lock", u"a.conf"));
}

TEST_F(SettingsFileTest, ProcessesThatWriteAtTheSameTimeKeepEachOthersKeys) {
    QList<QProcess*> others;
    QObject owner;
    const QStringList keys{QStringLiteral("ejectWhenDone"), QStringLiteral("thoroughVerify"),
                           QStringLiteral("retroMode"), QStringLiteral("hasCompletedOnboarding")};
    file = folder.path(QStringLiteral("config/Spindrift/Spindrift.conf"));
    for (int round = 0; round < 4; ++round) {
        QFile::remove(file);
        for (const QString& key : keys) {
            auto* process = new QProcess(&owner);
            process->start(QStringLiteral(PREFERENCES_PROBE), {key, QStringLiteral("true")});
            others.append(process);
        }
        for (int i = 0; i < 50; ++i) {
            EXPECT_EQ(SettingsFile::update(file, {{"own", QByteArray::number(i)}}), 0);
        }
        for (QProcess* process : std::exchange(others, {})) {
            EXPECT_TRUE(process->waitForFinished(60000));
            EXPECT_EQ(process->exitCode(), 0);
        }
        const QByteArrayList lines =
            TestFolder::read(file).value_or(QByteArray()).trimmed().split('\n');
        EXPECT_THAT(lines, testing::UnorderedElementsAre(
                               "[General]", "own=49", "ejectWhenDone=true", "thoroughVerify=true",
                               "retroMode=true", "hasCompletedOnboarding=true"));
    }
}

}  // namespace
