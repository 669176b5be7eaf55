// The built program with the real disc tools on the practice drive.
#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <csignal>

#include "CliProgram.h"
#include "Waiting.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

QByteArray randomBytes(qsizetype count) {
    QByteArray bytes(count, Qt::Uninitialized);
    QRandomGenerator generator(1234);
    for (char& byte : bytes) {
        byte = static_cast<char>(generator.generate());
    }
    return bytes;
}

// Whether two files hold the same bytes, as cmp sees it.
bool areSame(const QString& first, const QString& second) {
    QProcess compare;
    compare.start(QStringLiteral("/usr/bin/cmp"), {first, second});
    return compare.waitForFinished(-1) && compare.exitStatus() == QProcess::NormalExit &&
           compare.exitCode() == 0;
}

class PracticeProgramTest : public testing::Test {
protected:
    PracticeProgramTest() { CliTest::useRealTools(folder); }

    QString target() const { return folder.path(QStringLiteral("out.iso")); }

    QStringList rip(const QString& image, const QStringList& more = {}) const {
        return QStringList{"rip", "--practice", image, "--output", target(), "--json"} + more;
    }

    void driveIs(const QByteArray& json) const {
        folder.write("data/Spindrift/practice-drive/drive.json", json);
    }

    // An image whose size is no multiple of the tool's blocks.
    QString image(qsizetype sectors = 515) const {
        return folder.write("image.iso", randomBytes(sectors * 2048));
    }

    // A foreign image that a package of the distribution brings along.
    void expectTrueCopyOf(const QString& path) const {
        if (!QFile::exists(path)) {
            const std::string reason = path.toStdString() + " is not installed";
            if (qEnvironmentVariableIsSet("SPINDRIFT_REQUIRE_ALL")) {
                FAIL() << reason;
            }
            GTEST_SKIP() << reason;
        }
        CliProgram program(rip(path, {"--thorough"}));
        EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
        EXPECT_TRUE(areSame(path, target()));
        EXPECT_EQ(program.lastValue("bytesWritten"), QFileInfo(path).size());
        EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    }

    TestFolder folder;
};

TEST_F(PracticeProgramTest, AFinishedImageHasTheModeOfAnyNewFile) {
    CliProgram program(rip(image()));
    EXPECT_EQ(program.exitStatus(), 0);
    const QString other = folder.write("other", "x");
    EXPECT_EQ(QFileInfo(target()).permissions(), QFileInfo(other).permissions());
}

TEST_F(PracticeProgramTest, TheSampleDiscIsCopiedByteForByte) {
    ASSERT_TRUE(QFile::exists(QStringLiteral(SPINDRIFT_SAMPLE_DISC)))
        << "the sample disc is not built";
    CliProgram program({"rip", "--practice", "--output", target(), "--json"});
    EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
    EXPECT_TRUE(areSame(SPINDRIFT_SAMPLE_DISC, target()));
    EXPECT_EQ(program.changes().back(), "verifyStatus=\"matched\"");
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
}

TEST_F(PracticeProgramTest, TheSampleDiscHasItsName) {
    CliProgram program({"status", "--practice", "--json"});
    EXPECT_EQ(program.exitStatus(), 0);
    const auto status = program.jsonLines().at(0);
    EXPECT_EQ(status["disc"]["volumeName"], "SPINDRIFT_SAMPLE");
    EXPECT_EQ(status["disc"]["kind"], "CD");
    EXPECT_EQ(status["disc"]["totalBytes"],
              QFileInfo(folder.path("data/Spindrift/practice-drive/disc.iso")).size());
    EXPECT_EQ(status["lastError"], nullptr);
}

TEST_F(PracticeProgramTest, TheGrubRescueDiscIsCopiedByteForByte) {
    expectTrueCopyOf("/usr/lib/grub-rescue/grub-rescue-cdrom.iso");
}

TEST_F(PracticeProgramTest, TheIpxeDiscIsCopiedByteForByte) {
    expectTrueCopyOf("/usr/lib/ipxe/ipxe.iso");
}

TEST_F(PracticeProgramTest, AnImageWithAnOddNumberOfSectorsIsCopiedWhole) {
    const QString disc = image(1);
    CliProgram program(rip(disc, {"--thorough"}));
    EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
    EXPECT_TRUE(areSame(disc, target()));
}

TEST_F(PracticeProgramTest, AnInterruptedRipLeavesNothingAndNobody) {
    driveIs(R"({"bytesPerSecond": 200000})");
    CliProgram program(rip(image()), CliProgram::Group::Own);
    ASSERT_TRUE(program.waitForOutput("\"progress\""));
    program.sendSignalToGroup(SIGINT);
    EXPECT_EQ(program.exitStatus(), 130);
    EXPECT_EQ(program.lastValue("isRunning"), false);
    EXPECT_EQ(program.lastValue("error"), nullptr);
    EXPECT_THAT(TestFolder::list(folder.temporary()), IsEmpty());
    EXPECT_FALSE(QFile::exists(target()));
}

TEST_F(PracticeProgramTest, AReaderThatLeavesEndsTheRip) {
    driveIs(R"({"bytesPerSecond": 200000})");
    QProcess shell;
    shell.start(
        "/bin/bash",
        QStringList{"-c", "\"$0\" \"$@\" | head -n 1; echo ${PIPESTATUS[0]}; ls -A \"$TMPDIR\"",
                    SPINDRIFT_CLI} +
            rip(image()));
    ASSERT_TRUE(shell.waitForFinished(60000));
    EXPECT_EQ(shell.readAllStandardOutput(), "{\"property\":\"isRunning\",\"value\":true}\n130\n");
}

TEST_F(PracticeProgramTest, ADiscThatChangesBetweenTheReadingsIsAMismatch) {
    driveIs(R"({"faults": [{"lba": 100, "count": 1, "kind": "changed"}]})");
    const QString disc = image();
    CliProgram program(rip(disc, {"--thorough", "--eject"}));
    EXPECT_EQ(program.exitStatus(), 2) << program.errors().toStdString();
    EXPECT_EQ(program.lastValue("verifyStatus"), "mismatched");
    EXPECT_TRUE(areSame(disc, target()));
    EXPECT_TRUE(QFile::exists(folder.path("data/Spindrift/practice-drive/disc.iso")));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
}

TEST_F(PracticeProgramTest, AnUnreadableSectorIsNamedInTheError) {
    driveIs(R"({"faults": [{"lba": 123, "count": 1, "kind": "unreadable"}]})");
    CliProgram program(rip(image()));
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_THAT(program.lastValue("error").dump(), HasSubstr("123"));
    EXPECT_FALSE(QFile::exists(target()));
}

TEST_F(PracticeProgramTest, ADriveThatDeniesAccessIsAPermissionError) {
    driveIs(R"({"denyAccess": true})");
    CliProgram program(rip(image()));
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.jsonLines().back()["case"], "permissionDenied");
}

TEST_F(PracticeProgramTest, AVerifiedDiscIsEjectedWhenAskedFor) {
    CliProgram program(rip(image(), {"--eject"}));
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.errors(), "");
    EXPECT_THAT(TestFolder::list(folder.path("data/Spindrift/practice-drive")),
                ElementsAre(QStringLiteral(".lock"), QStringLiteral("ejected.iso")));
}

TEST_F(PracticeProgramTest, AnEjectThatFailsIsTold) {
    driveIs(R"({"failEject": true})");
    CliProgram program({"eject", "--practice", image()});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.errors(), "spindrift-cli: The disc couldn't be ejected.\n");
}

TEST_F(PracticeProgramTest, ADriveThatIsNotThereIsAnError) {
    driveIs(R"({"noDrive": true})");
    CliProgram program({"status", "--json", "--practice", image()});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.jsonLines().at(0)["lastError"], "No optical drive found.");
}

TEST_F(PracticeProgramTest, AMalformedDriveDescriptionIsAnErrorAndNoGuess) {
    driveIs("{");
    CliProgram program({"status", "--json", "--practice", image()});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_THAT(program.jsonLines().at(0)["lastError"].dump(), HasSubstr("drive.json"));
}

TEST_F(PracticeProgramTest, TwoRipsOfDifferentDiscsRunAtOnce) {
    const QString one = folder.write("one.iso", randomBytes(700 * 2048));
    const QString two = folder.write("two.iso", randomBytes(300 * 2048));
    driveIs(R"({"bytesPerSecond": 3000000})");
    CliProgram first({"rip", "--json", "--practice", one, "--output", folder.path("1.iso")});
    ASSERT_TRUE(first.waitForOutput("isRunning"));
    CliProgram second({"rip", "--json", "--practice", two, "--output", folder.path("2.iso")});
    EXPECT_EQ(first.exitStatus(), 0);
    EXPECT_EQ(second.exitStatus(), 0);
    EXPECT_TRUE(areSame(one, folder.path("1.iso")));
    EXPECT_TRUE(areSame(two, folder.path("2.iso")));
}

TEST_F(PracticeProgramTest, ASpeedTestMeasuresThePaceOfTheDrive) {
    driveIs(R"({"vendor": "SLOW", "product": "READER", "revision": "1", )"
            R"("bytesPerSecond": 2000000})");
    CliProgram test({"speed-test", "--json", "--practice", image(2000)});
    EXPECT_EQ(test.exitStatus(), 0) << test.errors().toStdString();
    const auto result = test.lastValue("result");
    EXPECT_LT(result["averageBytesPerSecond"].get<double>(), 2'100'000);
    EXPECT_GT(result["averageBytesPerSecond"].get<double>(), 1'000'000);

    CliProgram copy(rip(image(2000)));
    EXPECT_EQ(copy.exitStatus(), 0);
    CliProgram history({"history", "--json"});
    EXPECT_EQ(history.exitStatus(), 0);
    const auto entries = history.jsonLines();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0]["source"], "Rip");
    EXPECT_EQ(entries[1]["source"], "Speed Test");
    EXPECT_EQ(entries[1]["driveKey"], "SLOW|READER|1");
    EXPECT_GT(entries[1]["multiple"].get<double>(), 6);
}

TEST_F(PracticeProgramTest, AccessFollowsTheImageInTheTray) {
    const QString disc = image();
    CliProgram granted({"access", "--json", "--practice", disc});
    EXPECT_EQ(granted.exitStatus(), 0);
    EXPECT_EQ(granted.output(), "{\"granted\":true}\n");
}

TEST_F(PracticeProgramTest, AccessNamesAMalformedDriveDescription) {
    driveIs(R"({"denyAccess": "yes"})");
    const std::string sentence =
        "spindrift-cli: “" + folder.path("data/Spindrift/practice-drive/drive.json").toStdString() +
        "” is malformed: it must hold one JSON object, in which “denyAccess” is true or false.\n";
    CliProgram program({"access", "--practice", image()});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors().toStdString(), sentence);
    CliProgram json({"access", "--json", "--practice", image()});
    EXPECT_EQ(json.exitStatus(), 1);
    EXPECT_EQ(json.output(), "{\"granted\":false}\n");
    EXPECT_EQ(json.errors().toStdString(), sentence);
}

TEST_F(PracticeProgramTest, TheDiscInTheTrayIsNotOverwritten) {
    const QString disc = image();
    CliProgram program({"rip", "--force", "--practice", disc, "--output", disc});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_THAT(program.errors().toStdString(), HasSubstr("is the disc in the practice drive."));
}

TEST_F(PracticeProgramTest, ADiscOfMusicIsAnnounced) {
    driveIs(R"({"audio": true})");
    const QString disc = folder.write(QStringLiteral("audio.img"), QByteArray(2352 * 100, 'a'));
    CliProgram program({"rip", "--practice", disc, "--output", target()});
    EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
    EXPECT_THAT(
        program.errors().toStdString(),
        HasSubstr("Audio CDs have no filesystem \u2014 a raw image won't be a playable ISO."));
}

TEST_F(PracticeProgramTest, AFileSystemThatClaimsMoreThanTheDiscHasIsTold) {
    const QString disc = folder.path(QStringLiteral("cut.iso"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(SPINDRIFT_SAMPLE_DISC), disc));
    ASSERT_TRUE(QFile::resize(disc, QFileInfo(disc).size() / 2 / 2048 * 2048));
    CliProgram program({"rip", "--practice", disc, "--output", target()});
    EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
    EXPECT_THAT(program.errors().toStdString(), HasSubstr("the file system claims"));
}

}  // namespace
