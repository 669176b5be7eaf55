#include "RipTarget.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "TestFolder.h"

namespace {

using RipTarget::Existing;

class RipTargetTest : public testing::Test {
protected:
    std::string objection(const QString& path, Existing existing = Existing::Refuse) const {
        const auto text = RipTarget::objection(path, existing);
        return text ? QString(*text).replace(folder.path(), QStringLiteral("FOLDER")).toStdString()
                    : "none";
    }

    TestFolder folder;
};

TEST_F(RipTargetTest, ANewFileIsFine) {
    EXPECT_EQ(objection(folder.path("a.iso")), "none");
}

TEST_F(RipTargetTest, AFolderThatIsMissingIsLeftToTheRip) {
    EXPECT_EQ(objection(folder.path("no/such/a.iso")), "none");
}

TEST_F(RipTargetTest, AnExistingFileNeedsForce) {
    const QString file = folder.write("a.iso", "x");
    EXPECT_EQ(objection(file), "“FOLDER/a.iso” exists already. Use --force to replace it.");
    EXPECT_EQ(objection(file, Existing::Replace), "none");
}

TEST_F(RipTargetTest, ALinkToNothingNeedsForceToo) {
    QFile::link(folder.path("nothing"), folder.path("a.iso"));
    EXPECT_EQ(objection(folder.path("a.iso")),
              "“FOLDER/a.iso” exists already. Use --force to replace it.");
}

TEST_F(RipTargetTest, AFolderIsRefusedEvenWithForce) {
    EXPECT_EQ(objection(folder.path("home"), Existing::Replace),
              "“FOLDER/home” is a folder. Name the file to write.");
    EXPECT_EQ(objection(folder.path("missing/"), Existing::Replace),
              "“FOLDER/missing/” is a folder. Name the file to write.");
}

TEST_F(RipTargetTest, ADeviceIsRefusedEvenWithForce) {
    EXPECT_EQ(objection("/dev/null", Existing::Replace), "“/dev/null” is not an ordinary file.");
}

TEST_F(RipTargetTest, TheDiscInThePracticeDriveIsRefusedEvenWithForce) {
    const QString image = folder.write("disc.iso", "x");
    QDir().mkpath(folder.path("drive"));
    QFile::link(image, folder.path("drive/disc.iso"));
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", folder.path("drive").toUtf8());
    EXPECT_EQ(objection(image, Existing::Replace),
              "“FOLDER/disc.iso” is the disc in the practice drive.");
    EXPECT_EQ(objection(folder.write("other.iso", "x"), Existing::Replace), "none");
}

TEST_F(RipTargetTest, ARelativeNameIsTakenFromTheCurrentFolder) {
    EXPECT_EQ(RipTarget::absolutePath("a.iso"), QDir::currentPath() + QStringLiteral("/a.iso"));
    EXPECT_EQ(RipTarget::absolutePath("/x/../a.iso"), QStringLiteral("/x/../a.iso"));
}

}  // namespace
