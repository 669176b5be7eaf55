// "rip --thorough" of the built program against stub tools.
#include <gmock/gmock.h>

#include <csignal>

#include "CliProgram.h"
#include "StubTools.h"
#include "Waiting.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ThoroughRipProgramTest : public testing::Test {
protected:
    ThoroughRipProgramTest() {
        CliTest::writeDrive(folder);
        digests("exec sha256sum \"$3\"");
    }

    QString target() const { return folder.path(QStringLiteral("out.iso")); }

    QStringList rip() const { return {"rip", "--thorough", "--json", "--output", target()}; }

    // One body for the rip and one for the second reading.
    void imaging(const QByteArray& first, const QByteArray& second) const {
        CliTest::writeImagingTool(folder, "case \"$image\" in *spindrift-verify-*)\n" + second +
                                              "\n;;\n*)\n" + first + "\n;;\nesac");
    }

    void digests(const QByteArray& body) const {
        StubTools::write(folder, "/usr/bin/shasum", body);
    }

    // A body that says that it runs, then runs until it is ended.
    QByteArray hanging() const {
        return "echo $$ > '" + folder.path("pid").toUtf8() + "'\nexec sleep 1000";
    }

    void interruptWhenTheToolHangs(CliProgram& program) const {
        ASSERT_TRUE(program.waitForOutput("isVerifying"));
        ASSERT_TRUE(waitUntil([this] {
            return TestFolder::read(folder.path("pid")).value_or(QByteArray()).endsWith('\n');
        }));
        program.sendSignal(SIGINT);
        EXPECT_EQ(program.exitStatus(), 130);
        EXPECT_THAT(program.changes(), testing::Contains("isVerifying=false"));
        EXPECT_EQ(program.lastValue("verifyStatus"), nullptr);
        EXPECT_EQ(TestFolder::read(target()), QByteArray("image"));
        EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
        EXPECT_FALSE(
            CliTest::isRunning(TestFolder::read(folder.path("pid"))->trimmed().toLongLong()));
    }

    static constexpr const char* image = "printf image > \"$image\"";

    TestFolder folder;
};

TEST_F(ThoroughRipProgramTest, TwoEqualReadingsMatch) {
    imaging(image, image);
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(program.changes(),
                ElementsAre("isRunning=true", "isRunning=false", "progress=1.0", "finished=true",
                            "lastRipAverageBytesPerSecond", "isVerifying=true", "isVerifying=false",
                            "verifyStatus=\"matched\""));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
}

TEST_F(ThoroughRipProgramTest, ADifferenceIsAnExitStatusOfItsOwn) {
    imaging(image, "printf other > \"$image\"");
    CliProgram program(rip() + QStringList{"--eject"});
    EXPECT_EQ(program.exitStatus(), 2);
    EXPECT_EQ(program.lastValue("verifyStatus"), "mismatched");
    EXPECT_EQ(TestFolder::read(target()), QByteArray("image"));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    EXPECT_THAT(StubTools::log(folder).filter(QStringLiteral("eject")), IsEmpty());
}

TEST_F(ThoroughRipProgramTest, ForPeopleADifferenceIsASentence) {
    imaging(image, "printf other > \"$image\"");
    CliProgram program({"rip", "--thorough", "--output", target()});
    EXPECT_EQ(program.exitStatus(), 2);
    EXPECT_EQ(program.errors(),
              "spindrift-cli: The ISO does not match the disc. The disc was not "
              "ejected — you may want to retry.\n");
    EXPECT_THAT(program.output().toStdString(), HasSubstr("Verifying: reading the disc again\n"));
}

TEST_F(ThoroughRipProgramTest, ASecondReadingThatFailsIsNoVerdict) {
    imaging(image, "printf half > \"$image\"; exit 1");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.lastValue("verifyStatus").dump(),
              R"({"failed":"Could not re-read the disc to verify."})");
    EXPECT_EQ(TestFolder::read(target()), QByteArray("image"));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
}

TEST_F(ThoroughRipProgramTest, ADigestThatFailsIsNoVerdict) {
    imaging(image, image);
    digests("exit 1");
    CliProgram program(rip());
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.lastValue("verifyStatus").dump(),
              R"({"failed":"Could not compute checksum."})");
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
}

TEST_F(ThoroughRipProgramTest, AnInterruptionOfTheSecondReadingKeepsTheImage) {
    imaging(image, "printf half > \"$image\"\n" + hanging());
    CliProgram program(rip());
    interruptWhenTheToolHangs(program);
}

TEST_F(ThoroughRipProgramTest, AnInterruptionOfTheFirstDigestKeepsTheImage) {
    imaging(image, image);
    digests(hanging());
    CliProgram program(rip());
    interruptWhenTheToolHangs(program);
}

TEST_F(ThoroughRipProgramTest, AnInterruptionOfTheSecondDigestKeepsTheImage) {
    imaging(image, image);
    digests("case \"$3\" in *spindrift-verify-*) " + hanging() + ";; esac\nexec sha256sum \"$3\"");
    CliProgram program(rip());
    interruptWhenTheToolHangs(program);
}

TEST_F(ThoroughRipProgramTest, ForPeopleAnInterruptedVerificationSaysWhatIsKept) {
    imaging(image, hanging());
    CliProgram program({"rip", "--thorough", "--output", target()});
    ASSERT_TRUE(program.waitForOutput("Verifying"));
    program.sendSignal(SIGINT);
    EXPECT_EQ(program.exitStatus(), 130);
    EXPECT_EQ(program.errors(), "spindrift-cli: Verification cancelled. The image is kept: " +
                                    target().toUtf8() + "\n");
}

}  // namespace
