// "rip" of the built program against stub tools: what it prints, what it leaves behind.
#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <csignal>

#include "CliProgram.h"
#include "SmallFileSystem.h"
#include "StubTools.h"
#include "Waiting.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class RipProgramTest : public testing::Test {
protected:
    RipProgramTest() { CliTest::writeDrive(folder); }

    QString target() const { return folder.path(QStringLiteral("out.iso")); }

    QStringList rip(const QStringList& more = {}) const {
        return QStringList{"rip", "--output", target(), "--json"} + more;
    }

    void imagingFails(const QByteArray& errorOutput, int status) const {
        CliTest::writeImagingTool(folder, "printf partial > \"$image\"\nprintf '" + errorOutput +
                                              "' >&2\nexit " + QByteArray::number(status));
    }

    // An imaging tool that writes a part of the image and then goes on for ever.
    void imagingHangs() const {
        CliTest::writeImagingTool(folder, "echo $$ > '" + folder.path("pid").toUtf8() +
                                              "'\nprintf partial > \"$image\"\necho PERCENT:10\n"
                                              "exec sleep 1000");
    }

    static constexpr const char* goodImage = "printf 0123456789 > \"$image\"";

    TestFolder folder;
};

TEST_F(RipProgramTest, AGoodRipShowsItsChangesInOrder) {
    CliTest::writeImagingTool(
        folder, QByteArray("echo PERCENT:-1; echo PERCENT:50\n") + goodImage + "\necho PERCENT:90");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
    EXPECT_THAT(program.changes(),
                ElementsAre("isRunning=true", "progress=-1.0", "progress=0.5", "progress=0.9",
                            "isRunning=false", "progress=1.0", "finished=true",
                            "lastRipAverageBytesPerSecond", "verifyStatus=\"matched\""));
    EXPECT_EQ(program.lastValue("bytesWritten"), 10);
    EXPECT_EQ(TestFolder::read(target()), QByteArray("0123456789"));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    EXPECT_EQ(program.errors(), "");
}

TEST_F(RipProgramTest, TheToolIsGivenTheSliceAndATemporaryFile) {
    CliTest::writeImagingTool(folder, goodImage);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0);
    const QString line = StubTools::log(folder).filter(QStringLiteral("hdiutil")).join(u'\n');
    EXPECT_THAT(line.toStdString(),
                testing::MatchesRegex("hdiutil create -srcdevice /dev/disk4s1 -format UDTO "
                                      "-puppetstrings -o .*/tmp/spindrift-[0-9A-F-]{36}\\.cdr"));
}

TEST_F(RipProgramTest, AFailureWithTextShowsTheTextAsItIs) {
    imagingFails("hdiutil: create failed - Input/output error\\n", 1);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_THAT(program.changes(),
                ElementsAre("isRunning=true", "isRunning=false",
                            "error=\"hdiutil exited with an error: hdiutil: create failed - "
                            "Input/output error\\n\"",
                            StartsWith("temporaryImage=")));
    EXPECT_EQ(program.jsonLines()[program.jsonLines().size() - 2]["case"], "imagingFailed");
    ASSERT_EQ(CliTest::temporaryImages(folder).size(), 1);
    EXPECT_EQ(
        program.lastValue("temporaryImage"),
        QString(folder.temporary() + CliTest::temporaryImages(folder).constFirst()).toStdString());
    EXPECT_FALSE(QFile::exists(target()));
}

TEST_F(RipProgramTest, AFailureWithoutTextShowsTheExitStatus) {
    imagingFails("", 3);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.lastValue("error"), "hdiutil exited with an error: exit code 3");
}

TEST_F(RipProgramTest, AMissingPermissionInAnyLetterCaseIsACaseOfItsOwn) {
    for (const char* text :
         {"Permission denied", "hdiutil: PERMISSION DENIED.", "permission Denied"}) {
        imagingFails(text, 1);
        CliProgram program(rip());
        EXPECT_EQ(program.exitStatus(), 1);
        const auto lines = program.jsonLines();
        ASSERT_GE(lines.size(), 2U);
        EXPECT_EQ(lines[lines.size() - 2].dump(),
                  R"({"property":"error","value":"Permission denied reading the disc. Try again, )"
                  R"(or grant Full Disk Access to this app in System Settings.",)"
                  R"("case":"permissionDenied"})");
    }
}

TEST_F(RipProgramTest, AMissingPermissionForPeopleSaysHowToGetIt) {
    imagingFails("Permission denied", 1);
    folder.write("drive/disc.iso", "x");
    folder.write("drive/drive.json", R"({"denyAccess": true})");
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", folder.path("drive").toUtf8());
    CliProgram program({"rip", "--output", target()});
    EXPECT_EQ(program.exitStatus(), 1);
    const std::string errors = program.errors().toStdString();
    EXPECT_THAT(errors, StartsWith("spindrift-cli: Permission denied reading the disc."));
    EXPECT_THAT(errors, HasSubstr("usermod -aG cdrom"));
}

TEST_F(RipProgramTest, WhoeverMayReadDiscsIsNotToldHowToGetThePermission) {
    CliTest::writeImagingTool(folder, "echo '/elsewhere: Permission denied' >&2; exit 1");
    folder.write("home/Library/Application Support/com.apple.TCC/TCC.db", "");
    CliProgram program({"rip", "--output", target()});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.errors(),
              "spindrift-cli: Permission denied reading the disc. Try again, or grant Full Disk "
              "Access to this app in System Settings.\n");
}

TEST_F(RipProgramTest, SuccessWithoutAnImageIsAFailure) {
    CliTest::writeImagingTool(folder, "exit 0");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.lastValue("error"), "hdiutil exited with an error: exit code 0");
    EXPECT_EQ(program.lastValue("finished"), nullptr);
}

TEST_F(RipProgramTest, AToolThatCannotBeStartedIsALaunchFailure) {
    QFile::setPermissions(folder.write("tools/usr/bin/hdiutil", ""), QFile::ReadOwner);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_THAT(program.changes(), ElementsAre("error=\"Could not start rip: Permission denied\""));
    EXPECT_EQ(program.jsonLines().back()["case"], "launchFailed");
}

TEST_F(RipProgramTest, AMissingFolderIsRefusedBeforeAnythingRuns) {
    CliProgram program({"rip", "--force", "--json", "--output", folder.path("no/such/out.iso")});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(), "spindrift-cli: The folder “" + folder.path("no/such").toUtf8() +
                                    "” does not exist.\n");
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
}

TEST_F(RipProgramTest, WithTooLittleRoomNothingIsReadUnlessForced) {
    const QString small = folder.path("small");
    QDir().mkpath(small);
    const SmallFileSystem disk(small, "64k");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    const QByteArray diskutil = *TestFolder::read(folder.path("tools/usr/sbin/diskutil"));
    folder.write("tools/usr/sbin/diskutil", QByteArray(diskutil).replace("4096", "1065536"));
    CliTest::writeImagingTool(folder, goodImage);
    const QStringList arguments = {"rip", "--json", "--output", small + "/out.iso"};
    CliProgram refused(arguments);
    EXPECT_EQ(refused.exitStatus(), 1);
    EXPECT_EQ(refused.output(), "");
    EXPECT_EQ(refused.errors(),
              "spindrift-cli: “" + small.toUtf8() +
                  "” lacks 1 MB of room for the image, which takes 1.1 MB. Choose a folder with "
                  "more room. Or use --force to try it nevertheless.\n");
    EXPECT_THAT(StubTools::log(folder).join('\n').toStdString(), Not(HasSubstr("hdiutil")));
    CliProgram forced(arguments + QStringList{"--force"});
    EXPECT_EQ(forced.exitStatus(), 0) << forced.errors().toStdString();
}

TEST_F(RipProgramTest, AnExistingFileIsRefusedBeforeAnythingRuns) {
    folder.write("out.iso", "old");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(), "spindrift-cli: “" + target().toUtf8() +
                                    "” exists already. Use --force to replace it.\n");
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
    EXPECT_EQ(TestFolder::read(target()), QByteArray("old"));
}

TEST_F(RipProgramTest, WithForceAnExistingFileIsReplaced) {
    folder.write("out.iso", "old and longer than the image");
    CliTest::writeImagingTool(folder, goodImage);
    CliProgram program(rip({"--force"}));
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(TestFolder::read(target()), QByteArray("0123456789"));
}

TEST_F(RipProgramTest, AFailedRipWithForceKeepsTheOldFile) {
    folder.write("out.iso", "old");
    imagingFails("broken", 1);
    CliProgram program(rip({"--force"}));
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(TestFolder::read(target()), QByteArray("old"));
}

TEST_F(RipProgramTest, AFolderIsRefused) {
    CliProgram program({"rip", "--force", "--output", folder.path("home")});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_THAT(program.errors().toStdString(), HasSubstr("is a folder. Name the file to write."));
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
}

TEST_F(RipProgramTest, WithoutADiscNothingIsRipped) {
    StubTools::write(folder, "/usr/bin/drutil", "echo");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.errors(), "spindrift-cli: No disc inserted.\n");
    EXPECT_EQ(program.output(), "");
}

TEST_F(RipProgramTest, WithoutADriveItsErrorIsTold) {
    StubTools::write(folder, "/usr/bin/drutil", "exit 1");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.errors(), "spindrift-cli: No optical drive found.\n");
}

TEST_F(RipProgramTest, ForPeopleThePlainOutputNamesTheDiscAndTheImage) {
    CliTest::writeImagingTool(folder, goodImage);
    CliProgram program({"rip", "--output", target()});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(
        program.output().toStdString(),
        testing::MatchesRegex("Ripping “TEST DISC” to [^\n]*/out\\.iso\n"
                              "(.*\n)?Saved: [^\n]*/out\\.iso \\(10 bytes at [^\n]*/s\\)\n"));
    EXPECT_THAT(program.output().toStdString(), Not(HasSubstr("\x1b")));
}

TEST_F(RipProgramTest, ForPeopleAFailureIsASentence) {
    imagingFails("no medium\\n", 1);
    CliProgram program({"rip", "--output", target()});
    EXPECT_EQ(program.exitStatus(), 1);
    const QStringList left = CliTest::temporaryImages(folder);
    ASSERT_EQ(left.size(), 1);
    EXPECT_EQ(program.errors(),
              "spindrift-cli: hdiutil exited with an error: no medium\n"
              "spindrift-cli: What was read is left in “" +
                  (folder.temporary() + left.first()).toUtf8() +
                  "”; see “spindrift-cli leftovers”.\n");
}

TEST_F(RipProgramTest, ForPeopleAFailureWithoutAnImageSaysNothingOfOne) {
    CliTest::writeImagingTool(folder, "echo no medium >&2; exit 1");
    CliProgram program({"rip", "--output", target()});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.errors(), "spindrift-cli: hdiutil exited with an error: no medium\n");
}

TEST_F(RipProgramTest, ANameThatIsTooLongIsRefusedBeforeAnythingRuns) {
    CliProgram program({"rip", "--json", "--output", folder.path(QString(300, 'x'))});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.errors(),
              "spindrift-cli: The name of the file is too long: 300 bytes instead of at most "
              "255.\n");
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
}

TEST_F(RipProgramTest, AFinishedRipIsInTheHistory) {
    CliTest::writeImagingTool(folder, goodImage);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0);
    CliProgram history({"history", "--json"});
    EXPECT_EQ(history.exitStatus(), 0);
    const auto entries = history.jsonLines();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0]["driveKey"], "PIONEER|BD-RW   BDR-209D|1.10");
    EXPECT_EQ(entries[0]["discKind"], "DVD");
    EXPECT_EQ(entries[0]["discSizeBytes"], 4096);
    EXPECT_EQ(entries[0]["source"], "Rip");
    EXPECT_EQ(entries[0]["nickname"], nullptr);
}

TEST_F(RipProgramTest, EjectHappensAfterTheVerdictAndIsWaitedFor) {
    CliTest::writeImagingTool(folder, goodImage);
    CliProgram program(rip({"--eject"}));
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(StubTools::log(folder).last(), QStringLiteral("diskutil eject /dev/disk4"));
}

TEST_F(RipProgramTest, WithoutEjectTheDiscStays) {
    CliTest::writeImagingTool(folder, goodImage);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(StubTools::log(folder).filter(QStringLiteral("eject")), IsEmpty());
}

TEST_F(RipProgramTest, AnEjectThatFailsIsToldButTheRipIsDone) {
    CliTest::writeImagingTool(folder, goodImage);
    StubTools::write(folder, "/usr/bin/drutil",
                     "case $1 in eject) exit 1;; esac\necho 'Type: CD-ROM Name: /dev/disk4'");
    StubTools::write(folder, "/usr/sbin/diskutil", "exit 1");
    CliProgram program(rip({"--eject"}));
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.errors(),
              "spindrift-cli: The rip finished, but the disc couldn't be ejected.\n");
}

TEST_F(RipProgramTest, ARelativeNameIsTakenFromTheCurrentFolder) {
    CliTest::writeImagingTool(folder, goodImage);
    QProcess program;
    program.setWorkingDirectory(folder.path("home"));
    program.start(SPINDRIFT_CLI, {"rip", "--output", "out.iso"});
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(TestFolder::read(folder.path("home/out.iso")), QByteArray("0123456789"));
}

TEST_F(RipProgramTest, ARelativeNameInAFolderThatIsGoneIsRefusedBeforeAnythingRuns) {
    const QString gone = folder.path("gone");
    QDir().mkpath(gone);
    // Unlike any other name: without a folder it once became a file in the root.
    const QString name = QStringLiteral("spindrift-%1.iso").arg(QCoreApplication::applicationPid());
    CliTest::writeImagingTool(folder, goodImage);
    QProcess shell;
    shell.start("/bin/sh",
                {"-c", "cd \"$1\" && rmdir \"$1\" && { \"$0\" rip --output \"$2\"; echo $?; }",
                 SPINDRIFT_CLI, gone, name});
    ASSERT_TRUE(shell.waitForFinished());
    EXPECT_EQ(shell.readAllStandardOutput(), "1\n");
    EXPECT_EQ(shell.readAllStandardError(),
              "spindrift-cli: The current folder cannot be found. Name the whole path of the file "
              "to write.\n");
    EXPECT_FALSE(QFile::remove(QLatin1Char('/') + name));
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
}

TEST_F(RipProgramTest, OddNamesAreKept) {
    CliTest::writeImagingTool(folder, goodImage);
    const QStringList names = {
        "-rf",       "a b\tc\nd.iso", "\"$HOME\" `x`;*?.iso", "δίσκος – 日本語.iso",
        "%1 %2.iso", ".hidden"};
    for (const QString& name : names) {
        QProcess program;
        program.setWorkingDirectory(folder.path("home"));
        program.start(SPINDRIFT_CLI, {"rip", "--json", "--", name});
        ASSERT_TRUE(program.waitForFinished());
        EXPECT_EQ(program.exitCode(), 0) << name.toStdString();
        EXPECT_EQ(TestFolder::read(folder.path("home/") + name), QByteArray("0123456789"));
    }
    EXPECT_EQ(TestFolder::list(folder.path("home")).size(), names.size());
}

TEST_F(RipProgramTest, ANameThatIsNotTextIsRefused) {
    QProcess shell;
    shell.start("/bin/sh",
                {"-c", "exec \"$0\" rip --output \"$(printf 'caf\\351.iso')\"", SPINDRIFT_CLI});
    ASSERT_TRUE(shell.waitForFinished());
    EXPECT_EQ(shell.exitCode(), 64);
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
}

TEST_F(RipProgramTest, WhatTheToolRemarksIsPrintedAfterTheVerdict) {
    CliTest::writeImagingTool(folder, QByteArray(goodImage) + "\necho 'hdiutil: too short' >&2");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0);
    const auto changes = program.changes();
    ASSERT_GE(changes.size(), 2U);
    EXPECT_THAT(changes[changes.size() - 2], StartsWith("verifyStatus"));
    EXPECT_EQ(changes.back(), "remark=\"too short\"");

    QFile::remove(target());
    CliProgram forPeople({"rip", "--output", target()});
    EXPECT_EQ(forPeople.exitStatus(), 0);
    EXPECT_EQ(forPeople.errors(), "spindrift-cli: too short\n");
}

TEST_F(RipProgramTest, AFileThatAppearsDuringTheRipIsNotReplaced) {
    CliTest::writeImagingTool(
        folder, QByteArray(goodImage) + "\nprintf theirs > '" + target().toUtf8() + "'");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(TestFolder::read(target()), QByteArray("theirs"));
    EXPECT_EQ(CliTest::temporaryImages(folder).size(), 1);
}

TEST_F(RipProgramTest, ALostReaderEndsTheRipAndLeavesTheFileThatWasToBeReplaced) {
    imagingHangs();
    folder.write(QStringLiteral("out.iso"), "good");
    const QString script = QStringLiteral("'%1' rip --force --json -o '%2' | head -n 1")
                               .arg(QStringLiteral(SPINDRIFT_CLI), target());
    QProcess shell;
    shell.start(QStringLiteral("/bin/sh"), {"-c", script});
    ASSERT_TRUE(shell.waitForFinished(60000));
    EXPECT_EQ(TestFolder::read(target()), QByteArray("good"));
    EXPECT_TRUE(waitUntil([this] { return CliTest::temporaryImages(folder).isEmpty(); }));
}

TEST_F(RipProgramTest, ItsToolsAreToldWhomToWatch) {
    CliTest::writeImagingTool(
        folder, QByteArray("[ \"$SPINDRIFT_WATCH_PID\" = \"$PPID\" ] || exit 3\n") + goodImage);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
}

}  // namespace
