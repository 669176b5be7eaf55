#include "FullDiskAccess.h"

#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cerrno>

#include "TestFolder.h"

namespace {

using testing::ElementsAre;

const QString first = QStringLiteral("home/Library/Application Support/com.apple.TCC/TCC.db");
const QString second = QStringLiteral("home/Library/Safari/CloudTabs.db");

class FullDiskAccessTest : public testing::Test {
protected:
    FullDiskAccessTest() {
        // Not the drives of the machine that runs this.
        folder.setEnvironment("SPINDRIFT_DRIVE", "spindrift-test-has-no-such-drive");
    }

    void practice() {
        QDir().mkpath(folder.path(QStringLiteral("practice")));
        folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE",
                              folder.path(QStringLiteral("practice")).toUtf8());
    }

    // Decides over both files with these error numbers; notes which were opened.
    bool decide(int ofFirst, int ofSecond) {
        return FullDiskAccess::decide(
            {folder.path(first), folder.path(second)}, [=, this](const QString& path) {
                const bool isFirst = path == folder.path(first);
                opened << (isFirst ? QStringLiteral("first") : QStringLiteral("second"));
                return isFirst ? ofFirst : ofSecond;
            });
    }

    TestFolder folder;
    QStringList opened;
};

TEST_F(FullDiskAccessTest, TheTwoFilesBelowTheHomeFolderComeFirst) {
    EXPECT_THAT(FullDiskAccess::probeFiles().mid(0, 2),
                ElementsAre(folder.path(first), folder.path(second)));
}

TEST_F(FullDiskAccessTest, AFirstFileThatOpensDecidesAndTheSecondIsNotExamined) {
    folder.write(first, "");
    folder.write(second, "");
    EXPECT_TRUE(decide(0, EACCES));
    EXPECT_THAT(opened, ElementsAre(u"first"));
}

TEST_F(FullDiskAccessTest, AFirstFileThatIsForbiddenDecidesEvenIfTheSecondWouldOpen) {
    folder.write(first, "");
    folder.write(second, "");
    EXPECT_FALSE(decide(EPERM, 0));
    EXPECT_FALSE(decide(EACCES, 0));
    EXPECT_THAT(opened, ElementsAre(u"first", u"first"));
}

TEST_F(FullDiskAccessTest, WithoutTheFirstFileTheSecondDecides) {
    folder.write(second, "");
    EXPECT_TRUE(decide(EPERM, 0));
    EXPECT_FALSE(decide(0, EPERM));
    EXPECT_THAT(opened, ElementsAre(u"second", u"second"));
}

TEST_F(FullDiskAccessTest, WithoutEitherFileItIsNotGranted) {
    EXPECT_FALSE(decide(0, 0));
    EXPECT_THAT(opened, ElementsAre());
    EXPECT_FALSE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, AFirstFileThatFailsOtherwiseLeavesItToTheSecond) {
    folder.write(first, "");
    folder.write(second, "");
    for (const int error : {EMFILE, ENFILE, EIO, ENOMEDIUM, EINTR, ENOENT}) {
        opened.clear();
        EXPECT_TRUE(decide(error, 0));
        EXPECT_FALSE(decide(error, EACCES));
        EXPECT_FALSE(decide(error, error));
        EXPECT_EQ(opened.size(), 6);
    }
}

TEST_F(FullDiskAccessTest, ARealFileThatOpensIsEnough) {
    folder.write(first, "");
    EXPECT_TRUE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, AProbeKeepsNothingOpen) {
    folder.write(second, "");
    const auto descriptors = [] {
        return TestFolder::list(QStringLiteral("/proc/self/fd")).size();
    };
    const auto before = descriptors();
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(FullDiskAccess::isGranted());
    }
    EXPECT_EQ(descriptors(), before);
}

TEST_F(FullDiskAccessTest, ALinkToNothingIsNoFile) {
    QDir().mkpath(folder.path(QStringLiteral("home/Library/Safari")));
    ASSERT_TRUE(QFile::link(folder.path(QStringLiteral("nothing")), folder.path(second)));
    EXPECT_FALSE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, AFileThatNobodyAnswersForDoesNotBlock) {
    // A plain open of it would wait for a writer.
    QDir().mkpath(folder.path(QStringLiteral("home/Library/Safari")));
    ASSERT_EQ(mkfifo(folder.path(second).toLocal8Bit().constData(), 0600), 0);
    EXPECT_TRUE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, TheErrorNumberOfAFailedOpenIsTold) {
    EXPECT_EQ(FullDiskAccess::tryToOpen(folder.path(QStringLiteral("nothing"))), ENOENT);
    EXPECT_EQ(FullDiskAccess::tryToOpen(folder.path()), 0);
}

TEST_F(FullDiskAccessTest, WithoutAPracticeDriveTheDrivesOfThisMachineAreAsked) {
    folder.setEnvironment("SPINDRIFT_DRIVE", std::nullopt);
    QStringList expected{folder.path(first), folder.path(second)};
    for (const QString& name : TestFolder::list(QStringLiteral("/sys/class/block"))) {
        if (name.startsWith(QLatin1String("sr"))) {
            expected << QStringLiteral("/dev/") + name;
        }
    }
    EXPECT_EQ(FullDiskAccess::probeFiles(), expected);
}

TEST_F(FullDiskAccessTest, AChosenDriveIsTheOnlyOneAsked) {
    for (const char* name : {"sr1", "/dev/sr1"}) {
        folder.setEnvironment("SPINDRIFT_DRIVE", name);
        EXPECT_THAT(FullDiskAccess::probeFiles(),
                    ElementsAre(folder.path(first), folder.path(second), u"/dev/sr1"));
    }
}

TEST_F(FullDiskAccessTest, APracticeDriveStandsInForTheDevices) {
    practice();
    EXPECT_THAT(FullDiskAccess::probeFiles(),
                ElementsAre(folder.path(first), folder.path(second),
                            folder.path(QStringLiteral("practice/disc.iso")),
                            folder.path(QStringLiteral("practice"))));
}

TEST_F(FullDiskAccessTest, APracticeDriveIsGrantedWithAndWithoutADisc) {
    practice();
    EXPECT_TRUE(FullDiskAccess::isGranted());
    folder.write(QStringLiteral("practice/disc.iso"), "");
    EXPECT_TRUE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, APracticeDriveThatDeniesIsNotGranted) {
    practice();
    folder.write(QStringLiteral("practice/drive.json"), "{\"denyAccess\": true}");
    EXPECT_FALSE(FullDiskAccess::isGranted());
    folder.write(QStringLiteral("practice/disc.iso"), "");
    EXPECT_FALSE(FullDiskAccess::isGranted());
    folder.write(QStringLiteral("practice/drive.json"), "{\"denyAccess\": false}");
    EXPECT_TRUE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, APracticeDriveDeniesNothingButItself) {
    practice();
    folder.write(QStringLiteral("practice/drive.json"), "{\"denyAccess\": true}");
    EXPECT_EQ(FullDiskAccess::tryToOpen(folder.path(QStringLiteral("practice"))), EACCES);
    const QString neighbour = folder.write(QStringLiteral("practice-not"), "");
    EXPECT_EQ(FullDiskAccess::tryToOpen(neighbour), 0);
    folder.write(first, "");
    EXPECT_TRUE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, AMalformedDescriptionOfAPracticeDriveIsNoPermissionAndNoRefusal) {
    practice();
    for (const QByteArray& json :
         {QByteArray(""), QByteArray("[]"), QByteArray("{"), QByteArray("\xff"), QByteArray("null"),
          QByteArray("{\"denyAccess\": \"yes\"}"), QByteArray("{\"denyAccess\": 1}"),
          QByteArray("{\"denyAccess\": null}"), QByteArray("{}\0", 3)}) {
        folder.write(QStringLiteral("practice/drive.json"), json);
        EXPECT_EQ(FullDiskAccess::tryToOpen(folder.path(QStringLiteral("practice"))), EINVAL)
            << json.constData();
        EXPECT_FALSE(FullDiskAccess::isGranted()) << json.constData();
    }
    folder.write(QStringLiteral("practice/drive.json"), "{\"vendor\": \"ACME\"}");
    EXPECT_TRUE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, ADescriptionOfAPracticeDriveThatIsNoFileIsNoPermission) {
    practice();
    QDir().mkpath(folder.path(QStringLiteral("practice/drive.json")));
    EXPECT_FALSE(FullDiskAccess::isGranted());
}

TEST_F(FullDiskAccessTest, AnOrdinaryUserIsRefusedAFileThatIsNotForReading) {
    // The way to the files is open; the first of them is not.
    for (const char* part :
         {"", "home", "home/Library", "home/Library/Application Support",
          "home/Library/Application Support/com.apple.TCC", "home/Library/Safari"}) {
        const QString path = folder.path(QString::fromLatin1(part));
        QDir().mkpath(path);
        ASSERT_EQ(chmod(path.toLocal8Bit().constData(), 0755), 0);
    }
    folder.write(first, "");
    folder.write(second, "");
    ASSERT_EQ(chmod(folder.path(first).toLocal8Bit().constData(), 0), 0);
    ASSERT_EQ(chmod(folder.path(second).toLocal8Bit().constData(), 0644), 0);
    // Root may read everything, so it becomes another user for these lines.
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        const passwd* nobody = getpwnam("nobody");
        ASSERT_NE(nobody, nullptr);
        ASSERT_TRUE(FullDiskAccess::isGranted());
        ASSERT_EQ(seteuid(nobody->pw_uid), 0);
    }
    const int error = FullDiskAccess::tryToOpen(folder.path(first));
    const bool granted = FullDiskAccess::isGranted();
    if (isRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_EQ(error, EACCES);
    EXPECT_FALSE(granted);
}

}  // namespace
