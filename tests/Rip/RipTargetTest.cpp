#include "RipTarget.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "OrdinaryUser.h"
#include "TestFolder.h"

namespace {

class RipTargetTest : public testing::Test {
protected:
    std::string objection(const QString& path) const {
        const auto text = RipTarget::objection(path);
        return text ? QString(*text).replace(folder.path(), QStringLiteral("FOLDER")).toStdString()
                    : "none";
    }

    TestFolder folder;
};

TEST_F(RipTargetTest, ANewFileIsFine) {
    EXPECT_EQ(objection(folder.path("a.iso")), "none");
}

TEST_F(RipTargetTest, AFolderThatIsMissingIsNoObjectionAndCanBeAskedFor) {
    EXPECT_EQ(objection(folder.path("no/such/a.iso")), "none");
    EXPECT_FALSE(RipTarget::hasFolder(folder.path("no/such/a.iso")));
    EXPECT_TRUE(RipTarget::hasFolder(folder.path("a.iso")));
}

TEST_F(RipTargetTest, AnExistingFileIsFineAndTaken) {
    const QString file = folder.write("a.iso", "x");
    EXPECT_EQ(objection(file), "none");
    EXPECT_TRUE(RipTarget::isTaken(file));
    EXPECT_FALSE(RipTarget::isTaken(folder.path("b.iso")));
}

TEST_F(RipTargetTest, ALinkToNothingIsTakenToo) {
    QFile::link(folder.path("nothing"), folder.path("a.iso"));
    EXPECT_EQ(objection(folder.path("a.iso")), "none");
    EXPECT_TRUE(RipTarget::isTaken(folder.path("a.iso")));
}

TEST_F(RipTargetTest, AFolderIsRefused) {
    EXPECT_EQ(objection(folder.path("home")), "“FOLDER/home” is a folder. Name the file to write.");
    EXPECT_EQ(objection(folder.path("missing/")),
              "“FOLDER/missing/” is a folder. Name the file to write.");
}

TEST_F(RipTargetTest, ADeviceIsRefused) {
    EXPECT_EQ(objection("/dev/null"), "“/dev/null” is not an ordinary file.");
}

TEST_F(RipTargetTest, APipeIsRefused) {
    const QString pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(objection(pipe), "“FOLDER/pipe” is not an ordinary file.");
}

TEST_F(RipTargetTest, AFolderThatMayNotBeWrittenToIsRefused) {
    const QString closed = folder.path("closed");
    folder.write("closed/old.iso", "x");
    ASSERT_EQ(chmod(QFile::encodeName(closed).constData(), 0500), 0);
    {
        const OrdinaryUser user({folder.path(), closed});
        for (const char* name : {"closed/new.iso", "closed/old.iso"}) {
            EXPECT_EQ(objection(folder.path(name)),
                      "Nothing can be written to the folder “FOLDER/closed”: Permission denied.");
        }
    }
    ASSERT_EQ(chmod(QFile::encodeName(closed).constData(), 0700), 0);
}

TEST_F(RipTargetTest, AFileIsNoFolder) {
    folder.write("file", "x");
    EXPECT_EQ(objection(folder.path("file/a.iso")), "“FOLDER/file” is not a folder.");
}

TEST_F(RipTargetTest, ANameThatIsTooLongIsRefused) {
    EXPECT_EQ(objection(folder.path(QString(251, 'x') + ".iso")), "none");
    EXPECT_EQ(objection(folder.path(QString(252, 'x') + ".iso")),
              "The name of the file is too long: 256 bytes instead of at most 255.");
    EXPECT_EQ(objection(folder.path(QString(126, QChar(0xe4)) + ".iso")),
              "The name of the file is too long: 256 bytes instead of at most 255.");
}

TEST_F(RipTargetTest, TheDiscInThePracticeDriveIsRefused) {
    const QString image = folder.write("disc.iso", "x");
    QDir().mkpath(folder.path("drive"));
    QFile::link(image, folder.path("drive/disc.iso"));
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", folder.path("drive").toUtf8());
    EXPECT_EQ(objection(image), "“FOLDER/disc.iso” is the disc in the practice drive.");
    EXPECT_EQ(objection(folder.write("other.iso", "x")), "none");
}

TEST_F(RipTargetTest, TheProgramsOwnFilesAreRefusedWhetherTheyAreThereOrNot) {
    for (const char* own : {"data/Spindrift/speedlog.json", "data/Spindrift/drivenicknames.json",
                            "config/Spindrift/Spindrift.conf"}) {
        QDir().mkpath(QFileInfo(folder.path(own)).path());
        const std::string refusal =
            std::string("“FOLDER/") + own + "” is a file that Spindrift itself needs.";
        EXPECT_EQ(objection(folder.path(own)), refusal);
        folder.write(own, "x");
        EXPECT_EQ(objection(folder.path(own)), refusal);
        QFile::link(folder.path(own), folder.path("link.iso"));
        EXPECT_NE(objection(folder.path("link.iso")), "none");
        EXPECT_EQ(objection(folder.path(own) + ".iso"), "none");
        QFile::remove(folder.path("link.iso"));
    }
}

TEST_F(RipTargetTest, ARelativeNameIsTakenFromTheCurrentFolder) {
    EXPECT_EQ(RipTarget::absolutePath("a.iso"), QDir::currentPath() + QStringLiteral("/a.iso"));
    EXPECT_EQ(RipTarget::absolutePath("/x/../a.iso"), QStringLiteral("/x/../a.iso"));
}

}  // namespace
