// The other commands of the built program, against stub tools.
#include <gmock/gmock.h>
#include <unistd.h>

#include <QFile>
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
using testing::StartsWith;

class OtherProgramTest : public testing::Test {
protected:
    OtherProgramTest() { CliTest::writeDrive(folder); }

    QByteArray outputOf(const QStringList& arguments, int exitStatus = 0) const {
        CliProgram program(arguments);
        EXPECT_EQ(program.exitStatus(), exitStatus) << program.errors().toStdString();
        return program.output();
    }

    QByteArray errorsOf(const QStringList& arguments, int exitStatus) const {
        CliProgram program(arguments);
        EXPECT_EQ(program.exitStatus(), exitStatus);
        EXPECT_EQ(program.output(), "");
        return program.errors();
    }

    TestFolder folder;
};

TEST_F(OtherProgramTest, HelpAndVersionAreOutputAndNoErrors) {
    EXPECT_THAT(outputOf({"--help"}).toStdString(), StartsWith("Usage: spindrift-cli COMMAND"));
    for (const char* command :
         {"status", "rip", "speed-test", "history", "nickname", "eject", "access", "settings"}) {
        EXPECT_THAT(outputOf({command, "--help"}).toStdString(),
                    StartsWith(std::string("Usage: spindrift-cli ") + command));
    }
    EXPECT_THAT(outputOf({"--version"}).toStdString(),
                testing::MatchesRegex("spindrift-cli [0-9.]+\n"));
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
}

TEST_F(OtherProgramTest, AUsageErrorHasAHint) {
    EXPECT_EQ(errorsOf({}, 64),
              "spindrift-cli: No command was given.\nTry “spindrift-cli --help”.\n");
    EXPECT_EQ(errorsOf({"rip", "--fast"}, 64),
              "spindrift-cli: There is no option “--fast”.\nTry “spindrift-cli rip --help”.\n");
}

TEST_F(OtherProgramTest, TooFewFreeDescriptorsAreAnErrorAndNoCrash) {
    QProcess shell;
    shell.start("/bin/sh", {"-c", "ulimit -n 8; exec \"$0\" speed-test", SPINDRIFT_CLI});
    ASSERT_TRUE(shell.waitForFinished(100'000));
    EXPECT_EQ(shell.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(shell.exitCode(), 1);
    EXPECT_EQ(shell.readAllStandardError(), "spindrift-cli: Too many open files\n");
}

TEST_F(OtherProgramTest, ASpeedTestIsMeasuredShownAndRecorded) {
    CliTest::writeImagingTool(folder, "echo PERCENT:50\nprintf 0123456789 > \"$image\"");
    CliProgram program({"speed-test", "--json"});
    EXPECT_EQ(program.exitStatus(), 0);
    const auto lines = program.jsonLines();
    ASSERT_FALSE(lines.empty());
    const auto result = program.lastValue("result");
    EXPECT_EQ(result["source"], "Speed Test");
    EXPECT_EQ(result["discSizeBytes"], 4096);
    EXPECT_EQ(program.lastValue("isRunning"), false);
    EXPECT_EQ(program.lastValue("progress"), 0.5);
    EXPECT_EQ(program.lastValue("bytesRead"), 10);
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    CliProgram history({"history", "--json"});
    EXPECT_EQ(history.exitStatus(), 0);
    ASSERT_EQ(history.jsonLines().size(), 1U);
    EXPECT_EQ(history.jsonLines()[0]["id"], result["id"]);
}

TEST_F(OtherProgramTest, ASpeedTestThatFailsHasAnError) {
    CliTest::writeImagingTool(folder, "exit 1");
    CliProgram json({"speed-test", "--json"});
    EXPECT_EQ(json.exitStatus(), 1);
    EXPECT_EQ(json.lastValue("error"), "Speed test failed (exit code 1).");
    CliProgram people({"speed-test"});
    EXPECT_EQ(people.exitStatus(), 1);
    EXPECT_EQ(people.errors(), "spindrift-cli: Speed test failed (exit code 1).\n");
    EXPECT_EQ(outputOf({"history", "--json"}), "");
}

TEST_F(OtherProgramTest, ASpeedTestWhoseToolCannotStartHasAnError) {
    QFile::setPermissions(folder.write("tools/usr/bin/hdiutil", ""), QFile::ReadOwner);
    EXPECT_EQ(outputOf({"speed-test", "--json"}, 1),
              "{\"property\":\"error\",\"value\":\"Could not start speed test: Permission "
              "denied\"}\n");
}

TEST_F(OtherProgramTest, AnInterruptedSpeedTestLeavesNothing) {
    CliTest::writeImagingTool(folder,
                              "printf partial > \"$image\"; echo PERCENT:10\n"
                              "exec sleep 1000");
    CliProgram program({"speed-test", "--json"});
    ASSERT_TRUE(program.waitForOutput("0.1"));
    program.sendSignal(SIGINT);
    EXPECT_EQ(program.exitStatus(), 130);
    EXPECT_EQ(program.lastValue("result"), nullptr);
    EXPECT_EQ(program.lastValue("error"), nullptr);
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    EXPECT_EQ(outputOf({"history", "--json"}), "");
}

TEST_F(OtherProgramTest, AnInterruptedSpeedTestIsNoFailureOfTheToolThatWasKilledWithIt) {
    for (int round = 0; round < 5; ++round) {
        const QString pid = folder.path("pid");
        CliTest::writeImagingTool(
            folder, "echo $$ > '" + pid.toUtf8() + "'\necho PERCENT:10\nexec sleep 1000");
        CliProgram program({"speed-test", "--json"}, CliProgram::Group::Own);
        ASSERT_TRUE(program.waitForOutput("0.1"));
        ASSERT_TRUE(program.stop());
        program.sendSignalToGroup(SIGINT);
        ASSERT_TRUE(waitUntil([&] {
            return CliTest::stateOf(TestFolder::read(pid)->trimmed().toLongLong()) == 'Z';
        }));
        program.sendSignal(SIGCONT);
        EXPECT_EQ(program.exitStatus(), 130);
        EXPECT_EQ(program.lastValue("error"), nullptr);
    }
}

TEST_F(OtherProgramTest, TheHistoryIsNewestFirstWithMultipleAndNickname) {
    folder.write("data/Spindrift/speedlog.json", R"([
      {"id":"11111111-2222-3333-4444-555555555555","date":"2025-01-31T18:04:59Z","driveKey":"A|B|1",
       "driveModelString":"A B 1","discKind":"DVD","discSizeBytes":4700000000,
       "averageBytesPerSecond":11080000.0,"source":"Speed Test"},
      {"id":"66666666-2222-3333-4444-555555555555","date":"2024-01-31T18:04:59Z","driveKey":"C|D|2",
       "driveModelString":"C D 2","discKind":"CD","discSizeBytes":700000000,
       "averageBytesPerSecond":1200000.0,"source":"Rip"}])");
    folder.write("data/Spindrift/drivenicknames.json", R"({"A|B|1":"Office burner"})");
    CliProgram program({"history", "--json"});
    EXPECT_EQ(program.exitStatus(), 0);
    const auto lines = program.jsonLines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0]["multiple"], 8.0);
    EXPECT_EQ(lines[0]["nickname"], "Office burner");
    EXPECT_EQ(lines[0]["date"], "2025-01-31T18:04:59Z");
    EXPECT_EQ(lines[1]["multiple"], 8.0);
    EXPECT_EQ(lines[1]["nickname"], nullptr);
    EXPECT_EQ(lines[1]["id"], "66666666-2222-3333-4444-555555555555");

    folder.setEnvironment("TZ", "UTC");
    EXPECT_EQ(outputOf({"history"}).toStdString(),
              "2025-01-31 18:04  DVD      4.7 GB   11.1 MB/s    8.0x  Speed Test  Office burner\n"
              "2024-01-31 18:04  CD       700 MB    1.2 MB/s    8.0x  Rip         C D 2\n");
}

TEST_F(OtherProgramTest, WhatIsMeasuredWhileADiscIsReadStaysInTheHistory) {
    const QByteArray go = "'" + folder.path("go").toUtf8() + "'";
    CliTest::writeImagingTool(folder, "echo PERCENT:10\nwhile [ ! -e " + go +
                                          " ] && [ -d \"${image%/*}\" ]; do sleep 0.01; done\n"
                                          "printf 0123456789 > \"$image\"");
    CliProgram rip({"rip", "--json", "--output", folder.path("out.iso")});
    CliProgram test({"speed-test", "--json"});
    ASSERT_TRUE(rip.waitForOutput("0.1"));
    ASSERT_TRUE(test.waitForOutput("0.1"));
    CliTest::writeImagingTool(folder, "printf 0123456789 > \"$image\"");
    outputOf({"speed-test", "--json"});
    folder.write("go", "");
    EXPECT_EQ(rip.exitStatus(), 0) << rip.errors().toStdString();
    EXPECT_EQ(test.exitStatus(), 0) << test.errors().toStdString();
    CliProgram history({"history", "--json"});
    EXPECT_EQ(history.exitStatus(), 0);
    EXPECT_EQ(history.jsonLines().size(), 3U);
}

TEST_F(OtherProgramTest, AnEmptyHistorySaysSoToPeople) {
    EXPECT_EQ(outputOf({"history"}), "No speed tests recorded yet.\n");
    EXPECT_EQ(outputOf({"history", "--json"}), "");
}

TEST_F(OtherProgramTest, ANicknameIsSetShownAndRemoved) {
    EXPECT_EQ(outputOf({"nickname"}), "");
    EXPECT_EQ(outputOf({"nickname", "  Office burner \t"}), "Office burner\n");
    EXPECT_EQ(outputOf({"nickname"}), "Office burner\n");
    EXPECT_EQ(outputOf({"nickname", "--json"}),
              "{\"driveKey\":\"PIONEER|BD-RW   BDR-209D|1.10\",\"driveModelString\":\"PIONEER "
              "BD-RW   BDR-209D 1.10\",\"nickname\":\"Office burner\"}\n");
    EXPECT_EQ(outputOf({"nickname", ""}), "");
    EXPECT_EQ(outputOf({"nickname"}), "");
}

TEST_F(OtherProgramTest, ANicknameNeedsADrive) {
    StubTools::write(folder, "/usr/bin/drutil", "exit 1");
    EXPECT_EQ(errorsOf({"nickname", "X"}, 1), "spindrift-cli: No optical drive found.\n");
}

TEST_F(OtherProgramTest, EjectUsesTheDiscsOwnDevice) {
    EXPECT_EQ(outputOf({"eject", "--json"}), "{\"ejected\":true}\n");
    EXPECT_EQ(StubTools::log(folder).last(), QStringLiteral("diskutil eject /dev/disk4"));
}

TEST_F(OtherProgramTest, EjectWithoutADiscIsAFailure) {
    StubTools::write(folder, "/usr/bin/drutil", "echo");
    EXPECT_EQ(errorsOf({"eject"}, 1), "spindrift-cli: No disc inserted.\n");
}

TEST_F(OtherProgramTest, AccessIsToldByItsExitStatus) {
    folder.write("home/Library/Safari/CloudTabs.db", "");
    EXPECT_EQ(outputOf({"access", "--json"}), "{\"granted\":true}\n");
    EXPECT_EQ(outputOf({"access"}), "This user may read discs.\n");
}

TEST_F(OtherProgramTest, SettingsAreShownAndChanged) {
    EXPECT_EQ(outputOf({"settings"}),
              "ejectWhenDone true\nthoroughVerify false\nretroMode "
              "false\nhasCompletedOnboarding false\n");
    EXPECT_EQ(outputOf({"settings", "ejectWhenDone", "off"}), "");
    EXPECT_EQ(outputOf({"settings", "thoroughVerify", "ON"}), "");
    EXPECT_EQ(outputOf({"settings", "retroMode", "true", "--json"}), "{\"retroMode\":true}\n");
    EXPECT_EQ(outputOf({"settings", "ejectWhenDone"}), "false\n");
    EXPECT_EQ(outputOf({"settings", "--json"}),
              "{\"ejectWhenDone\":false,\"thoroughVerify\":true,\"retroMode\":true,"
              "\"hasCompletedOnboarding\":false}\n");
}

TEST_F(OtherProgramTest, AnUnknownSettingOrValueIsAUsageError) {
    EXPECT_THAT(errorsOf({"settings", "retromode"}, 64).toStdString(),
                HasSubstr("There is no setting “retromode”. Did you mean “retroMode”? The "
                          "settings are: ejectWhenDone, thoroughVerify, "));
    EXPECT_THAT(errorsOf({"settings", "AppleInterfaceStyle"}, 64).toStdString(),
                HasSubstr("There is no setting"));
    EXPECT_EQ(errorsOf({"settings", "retroMode", "maybe"}, 64),
              "spindrift-cli: “maybe” is not a value of “retroMode”: true, false, on or off.\n");
}

TEST_F(OtherProgramTest, ASettingThatCannotBeWrittenIsAFailure) {
    folder.write("config/Spindrift", "in the way");
    EXPECT_EQ(errorsOf({"settings", "retroMode", "on"}, 1),
              "spindrift-cli: The settings could not be saved: Not a directory.\n");
    EXPECT_EQ(errorsOf({"settings", "retroMode", "off", "--json"}, 1),
              "spindrift-cli: The settings could not be saved: Not a directory.\n");
    EXPECT_EQ(outputOf({"settings", "retroMode"}), "false\n");
}

// Whatever is free, one page or none: the setting is written, or it is told and nothing is lost.
TEST_F(OtherProgramTest, ASettingOnAFullDiskTakesNoOtherWithIt) {
    const QString file = folder.write("config/Spindrift/Spindrift.conf", "");
    const SmallFileSystem small(folder.path("config/Spindrift"), "64k");
    NEEDS_A_SMALL_FILE_SYSTEM(small);
    const QByteArray before = "[General]\nejectWhenDone=false\nthoroughVerify=true\n";
    int failures = 0;
    for (const int pages : {0, 1, 2}) {
        folder.write("config/Spindrift/Spindrift.conf", before);
        QFile ballast(folder.path("config/Spindrift/ballast"));
        ASSERT_TRUE(ballast.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray page(sysconf(_SC_PAGESIZE), 'x');
        while (ballast.write(page) == page.size()) {
        }
        ASSERT_TRUE(ballast.resize(ballast.size() - pages * page.size()));
        CliProgram program({"settings", "retroMode", "on"});
        if (program.exitStatus() == 0) {
            EXPECT_EQ(TestFolder::read(file), before + "retroMode=true\n");
        } else {
            ++failures;
            EXPECT_EQ(program.exitStatus(), 1);
            EXPECT_EQ(program.errors(),
                      "spindrift-cli: The settings could not be saved: No space "
                      "left on device.\n");
            EXPECT_EQ(TestFolder::read(file), before);
        }
        EXPECT_THAT(TestFolder::list(folder.path("config/Spindrift")),
                    ElementsAre(".Spindrift.lock", "Spindrift.conf", "ballast"));
        ballast.remove();
    }
    EXPECT_GE(failures, 1);
    EXPECT_LT(failures, 3);
}

TEST_F(OtherProgramTest, SettingsThatCannotBeReadAreAFailure) {
    folder.write("config/Spindrift/Spindrift.conf/in", "the way");
    const char* sentence = "spindrift-cli: The settings could not be read: Is a directory.\n";
    EXPECT_EQ(errorsOf({"settings"}, 1), sentence);
    EXPECT_EQ(errorsOf({"settings", "retroMode"}, 1), sentence);
}

TEST_F(OtherProgramTest, APracticeImageThatIsMissingIsToldBeforeAnythingRuns) {
    EXPECT_EQ(errorsOf({"status", "--practice", "/no/such.iso"}, 1),
              "spindrift-cli: “/no/such.iso” does not exist.\n");
    EXPECT_THAT(StubTools::log(folder), IsEmpty());
}

}  // namespace
