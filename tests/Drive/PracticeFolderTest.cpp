#include "PracticeFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "TestFolder.h"

namespace {

using testing::HasSubstr;

class PracticeFolderTest : public testing::Test {
protected:
    QString drive(const QString& file = QString()) const {
        return folder.path(QStringLiteral("data/Spindrift/practice-drive") +
                           (file.isEmpty() ? file : QLatin1Char('/') + file));
    }

    std::string failure(const QString& image) {
        QString error;
        EXPECT_EQ(PracticeFolder::prepare(image, &error), std::nullopt);
        return error.toStdString();
    }

    PracticeFolder prepare(const std::optional<QString>& image) {
        QString error;
        const auto prepared = PracticeFolder::prepare(image, &error);
        EXPECT_TRUE(prepared) << error.toStdString();
        return prepared.value_or(PracticeFolder{});
    }

    // Holds a practice drive as another process does that uses it.
    int useAsAnotherProcess(const QString& path) {
        const int descriptor =
            ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        EXPECT_EQ(::flock(descriptor, LOCK_SH | LOCK_NB), 0);
        return descriptor;
    }

    TestFolder folder;
};

TEST_F(PracticeFolderTest, TheImageIsLinkedIntoTheTray) {
    const QString image = folder.write("a.iso", "A");
    const auto prepared = prepare(image);
    EXPECT_EQ(prepared.path, drive());
    EXPECT_EQ(prepared.disc(), drive("disc.iso"));
    EXPECT_EQ(QFile::symLinkTarget(drive("disc.iso")), image);
    EXPECT_EQ(qgetenv("SPINDRIFT_PRACTICE_DRIVE"), drive().toUtf8());
}

TEST_F(PracticeFolderTest, ARelativeNameIsMadeAbsolute) {
    const QString image = folder.write("a.iso", "A");
    prepare(QDir::current().relativeFilePath(image));
    EXPECT_EQ(QFile::symLinkTarget(drive("disc.iso")), image);
}

TEST_F(PracticeFolderTest, AnOlderLinkIsReplacedAndTheEjectedDiscForgotten) {
    prepare(folder.write("a.iso", "A"));
    QFile::rename(drive("disc.iso"), drive("ejected.iso"));
    const QString image = folder.write("b.iso", "B");
    prepare(image);
    EXPECT_EQ(QFile::symLinkTarget(drive("disc.iso")), image);
    EXPECT_EQ(TestFolder::list(drive()), QStringList{QStringLiteral("disc.iso")});
}

TEST_F(PracticeFolderTest, ALinkWhoseImageIsGoneIsReplaced) {
    prepare(folder.write("a.iso", "A"));
    QFile::remove(folder.path("a.iso"));
    const QString image = folder.write("b.iso", "B");
    prepare(image);
    EXPECT_EQ(QFile::symLinkTarget(drive("disc.iso")), image);
}

TEST_F(PracticeFolderTest, TheDrivesSettingsAreKept) {
    folder.write("data/Spindrift/practice-drive/drive.json", "{}");
    prepare(folder.write("a.iso", "A"));
    EXPECT_EQ(TestFolder::read(drive("drive.json")), QByteArray("{}"));
}

TEST_F(PracticeFolderTest, WhatCannotBeADiscIsToldInASentence) {
    EXPECT_EQ(failure("/no/such.iso"), "“/no/such.iso” does not exist.");
    EXPECT_EQ(failure(folder.path("home")),
              "“" + folder.path("home").toStdString() + "” is a folder, not a disc image.");
    EXPECT_EQ(failure("/dev/null"), "“/dev/null” is not a file.");
    QFile::link(folder.path("nothing"), folder.path("link.iso"));
    EXPECT_THAT(failure(folder.path("link.iso")), HasSubstr("is a link to nothing."));
    EXPECT_FALSE(qEnvironmentVariableIsSet("SPINDRIFT_PRACTICE_DRIVE"));
}

TEST_F(PracticeFolderTest, AnImageThatMayNotBeReadIsToldInASentence) {
    const QString image = folder.write("a.iso", "A");
    QFile::setPermissions(image, {});
    // Root may read every file: ask as another user then.
    const bool isRoot = ::geteuid() == 0;
    if (isRoot) {
        ::chmod(QFile::encodeName(folder.path()).constData(), 0711);
        ASSERT_EQ(::seteuid(65534), 0);
    }
    const std::string text = failure(image);
    if (isRoot) {
        ASSERT_EQ(::seteuid(0), 0);
    }
    EXPECT_THAT(text, HasSubstr("cannot be read: Permission denied."));
}

TEST_F(PracticeFolderTest, ADataFolderThatCannotBeMadeIsToldInASentence) {
    const QString image = folder.write("a.iso", "A");
    folder.setEnvironment("XDG_DATA_HOME", folder.write("file", "").toUtf8());
    EXPECT_THAT(failure(image), HasSubstr("cannot be made."));
}

TEST_F(PracticeFolderTest, WithoutAnImageAFolderThatTheUserHasNamedIsUsedAsItIs) {
    folder.write("mine/disc.iso", "A");
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", folder.path("mine").toUtf8());
    const auto prepared = prepare(std::nullopt);
    EXPECT_EQ(prepared.path, folder.path("mine"));
    EXPECT_EQ(qgetenv("SPINDRIFT_PRACTICE_DRIVE"), folder.path("mine").toUtf8());
    EXPECT_FALSE(QFileInfo::exists(drive()));
}

TEST_F(PracticeFolderTest, ANamedFolderThatIsNoneIsToldInASentence) {
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", "/no/such/folder");
    QString error;
    EXPECT_EQ(PracticeFolder::prepare(std::nullopt, &error), std::nullopt);
    EXPECT_EQ(error, QStringLiteral("SPINDRIFT_PRACTICE_DRIVE names “/no/such/folder”, which is "
                                    "not a folder."));
}

TEST_F(PracticeFolderTest, AnImageGoesIntoTheProgramsFolderAndNeverIntoTheUsers) {
    folder.write("mine/disc.iso", "mine");
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", folder.path("mine").toUtf8());
    prepare(folder.write("a.iso", "A"));
    EXPECT_EQ(TestFolder::read(folder.path("mine/disc.iso")), QByteArray("mine"));
    EXPECT_EQ(qgetenv("SPINDRIFT_PRACTICE_DRIVE"), drive().toUtf8());
}

TEST_F(PracticeFolderTest, ARealFileInTheTrayIsNeverReplaced) {
    const QString own = folder.write("data/Spindrift/practice-drive/disc.iso", "mine");
    EXPECT_THAT(failure(folder.write("a.iso", "A")),
                HasSubstr("is not a link that this program made."));
    EXPECT_EQ(TestFolder::read(own), QByteArray("mine"));
    EXPECT_EQ(prepare(own).disc(), own);
}

TEST_F(PracticeFolderTest, ARealFileThatWasEjectedIsNeverLost) {
    const QString own = folder.write("data/Spindrift/practice-drive/ejected.iso", "mine");
    EXPECT_THAT(failure(folder.write("a.iso", "A")), HasSubstr("ejected.iso”"));
    EXPECT_EQ(TestFolder::read(own), QByteArray("mine"));
}

TEST_F(PracticeFolderTest, ADriveThatAnotherProcessUsesKeepsItsDisc) {
    const QString first = folder.write("a.iso", "A");
    prepare(first);
    const int other = useAsAnotherProcess(drive());
    const QString second = folder.write("b.iso", "B");
    EXPECT_EQ(prepare(second).path, drive() + QStringLiteral("-2"));
    EXPECT_EQ(QFile::symLinkTarget(drive("disc.iso")), first);
    EXPECT_EQ(QFile::symLinkTarget(drive() + QStringLiteral("-2/disc.iso")), second);
    ::close(other);
}

TEST_F(PracticeFolderTest, ADriveThatHoldsTheSameDiscIsShared) {
    const QString image = folder.write("a.iso", "A");
    prepare(image);
    const int other = useAsAnotherProcess(drive());
    EXPECT_EQ(prepare(image).path, drive());
    ::close(other);
}

TEST_F(PracticeFolderTest, ADriveWhoseDiscAnotherProcessHasEjectedIsNotReloaded) {
    const QString image = folder.write("a.iso", "A");
    prepare(image);
    const int other = useAsAnotherProcess(drive());
    QFile::rename(drive("disc.iso"), drive("ejected.iso"));
    EXPECT_EQ(prepare(image).path, drive() + QStringLiteral("-2"));
    EXPECT_FALSE(QFileInfo::exists(drive("disc.iso")));
    ::close(other);
}

TEST_F(PracticeFolderTest, ASecondDriveHasTheSettingsOfTheFirst) {
    folder.write("data/Spindrift/practice-drive/drive.json", "{\"vendor\":\"V\"}");
    prepare(folder.write("a.iso", "A"));
    const int other = useAsAnotherProcess(drive());
    const QString second = prepare(folder.write("b.iso", "B")).path;
    EXPECT_EQ(TestFolder::read(second + QStringLiteral("/drive.json")),
              QByteArray("{\"vendor\":\"V\"}"));
    ::close(other);
}

TEST_F(PracticeFolderTest, TheSampleDiscLiesBesideThePrograms) {
    const auto sample = PracticeFolder::sampleDisc();
    ASSERT_TRUE(sample);
    EXPECT_GT(QFileInfo(*sample).size(), 20'000'000);
    EXPECT_EQ(QFileInfo(*sample).size() % 2048, 0);
    prepare(std::nullopt);
    EXPECT_EQ(QFileInfo(drive("disc.iso")).canonicalFilePath(),
              QFileInfo(*sample).canonicalFilePath());
}

TEST_F(PracticeFolderTest, ANameWithBlanksAndOtherAlphabetsIsKept) {
    const QString image = folder.write("δίσκος 1 \"ok\"\n.iso", "A");
    prepare(image);
    EXPECT_EQ(QFile::symLinkTarget(drive("disc.iso")), image);
}

}  // namespace
