#include "UserFolders.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <QDir>
#include <QRegularExpression>
#include <QSet>

#include "TestFolder.h"

namespace {

TEST(UserFoldersTest, TheTemporaryFolderIsTheChosenOneEndingInASlash) {
    TestFolder folder;
    folder.setEnvironment("TMPDIR", QByteArray("/some/where"));
    EXPECT_EQ(UserFolders::temporary(), u"/some/where/");
    folder.setEnvironment("TMPDIR", QByteArray("/some/where/"));
    EXPECT_EQ(UserFolders::temporary(), u"/some/where/");
    folder.setEnvironment("TMPDIR", QByteArray("/"));
    EXPECT_EQ(UserFolders::temporary(), u"/");
}

TEST(UserFoldersTest, ARelativeTemporaryFolderIsMadeAbsolute) {
    TestFolder folder;
    folder.setEnvironment("TMPDIR", QByteArray("images"));
    EXPECT_EQ(UserFolders::temporary(), QDir::currentPath() + QStringLiteral("/images/"));
}

TEST(UserFoldersTest, WithoutAChosenOneTemporaryImagesLieOnADisk) {
    TestFolder folder;
    const QString expected =
        access("/var/tmp", W_OK) == 0 ? QStringLiteral("/var/tmp/") : QStringLiteral("/tmp/");
    folder.setEnvironment("TMPDIR", std::nullopt);
    EXPECT_EQ(UserFolders::temporary(), expected);
    folder.setEnvironment("TMPDIR", QByteArray());
    EXPECT_EQ(UserFolders::temporary(), expected);
}

TEST(UserFoldersTest, AFolderWhoseNameIsNoTextCountsAsNone) {
    TestFolder folder;
    folder.setEnvironment("TMPDIR", std::nullopt);
    folder.setEnvironment("XDG_DATA_HOME", std::nullopt);
    const QString temporary = UserFolders::temporary();
    const auto data = UserFolders::data();
    folder.setEnvironment("TMPDIR", QByteArray("/caf\xE9"));
    folder.setEnvironment("XDG_DATA_HOME", QByteArray("/caf\xE9"));
    EXPECT_EQ(UserFolders::temporary(), temporary);
    EXPECT_EQ(UserFolders::data(), data);
}

TEST(UserFoldersTest, TheHomeFolderHasNoSlashAtItsEnd) {
    TestFolder folder;
    folder.setEnvironment("HOME", QByteArray("/home/someone/"));
    EXPECT_EQ(UserFolders::home(), u"/home/someone");
    folder.setEnvironment("HOME", QByteArray("/"));
    EXPECT_EQ(UserFolders::home(), u"");
}

TEST(UserFoldersTest, WithoutHomeThePasswordDatabaseIsAsked) {
    TestFolder folder;
    const passwd* entry = getpwuid(getuid());
    ASSERT_NE(entry, nullptr);
    QString expected = QString::fromUtf8(entry->pw_dir);
    while (expected.endsWith(QLatin1Char('/'))) {
        expected.chop(1);
    }
    folder.setEnvironment("HOME", std::nullopt);
    EXPECT_EQ(UserFolders::home(), expected);
    folder.setEnvironment("HOME", QByteArray());
    EXPECT_EQ(UserFolders::home(), expected);
}

TEST(UserFoldersTest, TheDataFolderIsTheChosenOne) {
    TestFolder folder;
    folder.setEnvironment("XDG_DATA_HOME", QByteArray("/some/data/"));
    EXPECT_EQ(UserFolders::data(), u"/some/data");
}

TEST(UserFoldersTest, WithoutAnAbsoluteChoiceTheDataFolderIsUnderTheHomeFolder) {
    TestFolder folder;
    folder.setEnvironment("HOME", QByteArray("/home/someone"));
    for (const std::optional<QByteArray>& value :
         {std::optional<QByteArray>(), std::optional<QByteArray>(""),
          std::optional<QByteArray>("relative/data")}) {
        folder.setEnvironment("XDG_DATA_HOME", value);
        EXPECT_EQ(UserFolders::data(), u"/home/someone/.local/share");
    }
}

TEST(UserFoldersTest, AnIdentifierIsThirtySixUpperCaseCharactersAndFreshEachTime) {
    const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}")));
    QSet<QString> seen;
    for (int i = 0; i < 100; ++i) {
        const QString identifier = UserFolders::freshIdentifier();
        EXPECT_TRUE(form.match(identifier).hasMatch()) << identifier.toStdString();
        seen.insert(identifier);
    }
    EXPECT_EQ(seen.size(), 100);
}

}  // namespace
