// "status" of the built program against stub tools.
#include <gmock/gmock.h>

#include <QFile>

#include "CliProgram.h"
#include "StubTools.h"

namespace {

using Json = nlohmann::ordered_json;
using testing::HasSubstr;
using testing::StartsWith;

class StatusProgramTest : public testing::Test {
protected:
    void drive(const QByteArray& report) const {
        StubTools::write(folder, "/usr/bin/drutil", "cat <<'TXT'\n" + report + "\nTXT");
    }

    void diskutil(const QByteArray& info, const QByteArray& listing,
                  const QByteArray& volumes = QByteArray()) const {
        StubTools::write(folder, "/usr/sbin/diskutil",
                         "case \"$1 $2\" in\n'info -plist') cat <<'TXT'\n" + info +
                             "\nTXT\n;;\n'list -plist') cat <<'TXT'\n" + volumes +
                             "\nTXT\n;;\nlist*) cat <<'TXT'\n" + listing + "\nTXT\n;;\nesac");
    }

    static QByteArray info(const QByteArray& name, const QByteArray& size) {
        return "<plist version=\"1.0\"><dict><key>VolumeName</key><string>" + name +
               "</string><key>TotalSize</key><integer>" + size + "</integer></dict></plist>";
    }

    // The one object that "status --json" prints.
    Json status(int exitStatus = 0) const {
        CliProgram program({"status", "--json"});
        EXPECT_EQ(program.exitStatus(), exitStatus) << program.errors().toStdString();
        const auto lines = program.jsonLines();
        EXPECT_EQ(lines.size(), 1U) << program.output().toStdString();
        return lines.empty() ? Json() : lines.front();
    }

    static constexpr const char* head =
        " Vendor   Product           Rev \n PIONEER  BD-RW   BDR-209D  1.10\n\n";

    TestFolder folder;
};

TEST_F(StatusProgramTest, WithoutADriveTheErrorIsTheOnlyNews) {
    StubTools::write(folder, "/usr/bin/drutil", "exit 1");
    EXPECT_EQ(status(1).dump(), R"({"driveDetected":false,"driveIdentity":null,"disc":null,)"
                                R"("lastError":"No optical drive found."})");
}

TEST_F(StatusProgramTest, TheDriveToolsOwnWordsAreTheError) {
    StubTools::write(folder, "/usr/bin/drutil", "echo ' the bus is busy' >&2; exit 7");
    EXPECT_EQ(status(1)["lastError"], " the bus is busy\n");
}

TEST_F(StatusProgramTest, AnEmptyDriveHasAnIdentityAndNoDisc) {
    drive(QByteArray(head) + "           Type: No Media Inserted");
    EXPECT_EQ(status().dump(),
              R"({"driveDetected":true,"driveIdentity":{"vendor":"PIONEER",)"
              R"("product":"BD-RW   BDR-209D","revision":"1.10"},"disc":null,"lastError":null})");
}

TEST_F(StatusProgramTest, ACdRomHasNameSizeAndSlice) {
    drive(QByteArray(head) + "           Type: CD-ROM               Name: /dev/disk4");
    diskutil(info("MY CD", "681574400"), "   0: CD_partition disk4\n   1: data disk4s1");
    EXPECT_EQ(status()["disc"].dump(),
              R"({"bsdName":"disk4","rawType":"CD-ROM","kind":"CD","volumeName":"MY CD",)"
              R"("totalBytes":681574400,"imageSourceBSDName":"disk4s1","displayName":"MY CD"})");
}

TEST_F(StatusProgramTest, ADoubleLayerDvdKeepsTheBlankInItsType) {
    drive(QByteArray(head) + "           Type: DVD+R DL             Name: /dev/disk4");
    diskutil(info("FILM", "8500000000"), "   0: disk4");
    const Json disc = status()["disc"];
    EXPECT_EQ(disc["rawType"], "DVD+R DL");
    EXPECT_EQ(disc["kind"], "DVD");
    EXPECT_EQ(disc["totalBytes"], 8'500'000'000);
    EXPECT_EQ(disc["imageSourceBSDName"], "disk4");
}

TEST_F(StatusProgramTest, ABdReIsABd) {
    drive(QByteArray(head) + "           Type: BD-RE                Name: /dev/disk4");
    diskutil(info("BACKUP", "25025314816"), "");
    EXPECT_EQ(status()["disc"]["kind"], "BD");
}

TEST_F(StatusProgramTest, AProductOfTwoWordsStaysWhole) {
    drive(
        " Vendor   Product           Rev \n HL-DT-ST DVDRAM GP60NB60   RF01\n\n"
        "           Type: No Media Inserted");
    EXPECT_EQ(status()["driveIdentity"]["product"], "DVDRAM GP60NB60");
    EXPECT_EQ(status()["driveIdentity"]["revision"], "RF01");
}

TEST_F(StatusProgramTest, ColumnsAreCountedInCharactersNotBytes) {
    drive(
        " Vendor   Product           Rev \n ÄÖÜéñ日本  DVD Écrivain      1.0é\n\n"
        "           Type: No Media Inserted");
    EXPECT_EQ(status()["driveIdentity"]["vendor"], "ÄÖÜéñ日本");
    EXPECT_EQ(status()["driveIdentity"]["product"], "DVD Écrivain");
    EXPECT_EQ(status()["driveIdentity"]["revision"], "1.0é");
}

TEST_F(StatusProgramTest, AValuesLineShorterThanTheHeaderLeavesFieldsEmpty) {
    drive(" Vendor   Product           Rev \n PIONEER\n\n           Type: No Media Inserted");
    EXPECT_EQ(status()["driveIdentity"].dump(),
              R"({"vendor":"PIONEER","product":"","revision":""})");
}

TEST_F(StatusProgramTest, ASliceOfDisk40IsNoSliceOfDisk4) {
    drive(QByteArray(head) + "           Type: CD-ROM               Name: /dev/disk4");
    diskutil(info("X", "2048"),
             "   0: disk4\n   1: data disk4s1\n   0: disk40\n   2: other disk40s2");
    EXPECT_EQ(status()["disc"]["imageSourceBSDName"], "disk4s1");
}

TEST_F(StatusProgramTest, ADriveToolThatIsMissingIsNamedByItsFixedPath) {
    if (QFile::exists(QStringLiteral("/usr/bin/drutil"))) {
        GTEST_SKIP() << "this system has a drutil of its own";
    }
    folder.setEnvironment("SPINDRIFT_TOOL_ROOT", "/");
    EXPECT_EQ(status(1)["lastError"],
              "Failed to launch /usr/bin/drutil: No such file or directory");
}

TEST_F(StatusProgramTest, ADiskToolThatCannotRunLeavesTheDiscWithoutNameAndSize) {
    drive(QByteArray(head) + "           Type: CD-ROM               Name: /dev/disk4");
    QFile::setPermissions(folder.write("tools/usr/sbin/diskutil", ""), QFile::ReadOwner);
    EXPECT_EQ(status()["disc"].dump(),
              R"({"bsdName":"disk4","rawType":"CD-ROM","kind":"CD","volumeName":null,)"
              R"--("totalBytes":null,"imageSourceBSDName":"disk4","displayName":"CD (CD-ROM)"})--");
}

TEST_F(StatusProgramTest, AReportThatIsNotUtf8ShowsADriveWithoutDiscOrIdentity) {
    StubTools::write(folder, "/usr/bin/drutil", "printf 'Type: CD-ROM Name: /dev/disk4 \\377\\n'");
    EXPECT_EQ(status().dump(), R"({"driveDetected":true,"driveIdentity":null,"disc":null,)"
                               R"("lastError":null})");
}

TEST_F(StatusProgramTest, ADiscWithoutANameTakesTheFirstVolumeOfItsList) {
    drive(QByteArray(head) + "           Type: DVD-ROM              Name: /dev/disk4");
    diskutil(info("", "4096"), "disk4",
             "<plist><dict><key>VolumesFromDisks</key><array><string>First &amp; best</string>"
             "<string>Second</string></array></dict></plist>");
    EXPECT_EQ(status()["disc"]["volumeName"], "First & best");
}

TEST_F(StatusProgramTest, ForPeopleThereIsText) {
    CliTest::writeDrive(folder);
    CliProgram program({"status"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.output(),
              "Drive:  PIONEER BD-RW   BDR-209D 1.10\n"
              "Disc:   TEST DISC\n"
              "Type:   DVD-ROM\n"
              "Device: /dev/disk4, imaged from /dev/disk4s1\n"
              "Size:   4 KB (4096 bytes)\n");
}

TEST_F(StatusProgramTest, ForPeopleAnEmptyDriveSaysSo) {
    drive(QByteArray(head) + "           Type: No Media Inserted");
    CliProgram program({"status"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(program.output().toStdString(), HasSubstr("No disc inserted.\n"));
}

TEST_F(StatusProgramTest, ForPeopleAMissingDriveIsAnError) {
    StubTools::write(folder, "/usr/bin/drutil", "exit 1");
    CliProgram program({"status"});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(), "spindrift-cli: No optical drive found.\n");
}

TEST_F(StatusProgramTest, OutputThatCannotBeWrittenIsAFailure) {
    CliTest::writeDrive(folder);
    QProcess shell;
    shell.start("/bin/sh", {"-c", "exec \"$0\" status --json > /dev/full", SPINDRIFT_CLI});
    ASSERT_TRUE(shell.waitForFinished());
    EXPECT_EQ(shell.exitCode(), 1);
    EXPECT_EQ(shell.readAllStandardError(),
              "spindrift-cli: The output could not be written: No space left on device\n");
}

TEST_F(StatusProgramTest, HelpAndVersionThatCannotBeWrittenAreFailures) {
    for (const char* option : {"--help", "--version"}) {
        QProcess shell;
        shell.start("/bin/sh", {"-c", "exec \"$0\" \"$1\" > /dev/full", SPINDRIFT_CLI, option});
        ASSERT_TRUE(shell.waitForFinished());
        EXPECT_EQ(shell.exitCode(), 1) << option;
        EXPECT_EQ(shell.readAllStandardError(),
                  "spindrift-cli: The output could not be written: No space left on device\n");
    }
}

TEST_F(StatusProgramTest, AClosedOutputIsNotMixedUpWithAFile) {
    CliTest::writeDrive(folder);
    QProcess shell;
    shell.start("/bin/sh", {"-c", "exec \"$0\" status --json >&-", SPINDRIFT_CLI});
    ASSERT_TRUE(shell.waitForFinished());
    EXPECT_EQ(shell.exitCode(), 0);
}

TEST_F(StatusProgramTest, AnotherLocaleChangesNeitherTheJsonNorTheErrors) {
    CliTest::writeDrive(folder);
    folder.setEnvironment("LC_ALL", "C");
    CliProgram program({"status", "--json"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.errors(), "");
}

}  // namespace
