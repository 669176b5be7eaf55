// "rip" of the built program against stub tools, ended by signals or a reader that leaves.
#include <gmock/gmock.h>

#include <QFile>
#include <QProcess>
#include <csignal>

#include "CliProgram.h"
#include "StubTools.h"
#include "Waiting.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class InterruptedRipTest : public testing::Test {
protected:
    InterruptedRipTest() { CliTest::writeDrive(folder); }

    QString target() const { return folder.path(QStringLiteral("out.iso")); }

    QStringList rip(const QStringList& more = {}) const {
        return QStringList{"rip", "--output", target(), "--json"} + more;
    }

    // An imaging tool that writes a part of the image and then goes on for ever.
    void imagingHangs() const {
        CliTest::writeImagingTool(folder, "echo $$ > '" + folder.path("pid").toUtf8() +
                                              "'\nprintf partial > \"$image\"\necho PERCENT:10\n"
                                              "exec sleep 1000");
    }

    // The same of one that nothing but SIGKILL ends, as the kernel waits for the drive.
    void imagingHangsDespiteEverything() const {
        CliTest::writeImagingTool(folder, "trap '' TERM INT HUP\necho $$ > '" +
                                              folder.path("pid").toUtf8() +
                                              "'\nprintf partial > \"$image\"\necho PERCENT:10\n"
                                              "exec sleep 1000");
    }

    qint64 pidOfTheTool() const {
        return TestFolder::read(folder.path("pid")).value_or("0").trimmed().toLongLong();
    }

    void expectCancelledWithoutATrace(CliProgram& program) const {
        EXPECT_EQ(program.exitStatus(), 130);
        EXPECT_THAT(program.changes(),
                    ElementsAre("isRunning=true", "progress=0.1", "isRunning=false"));
        EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
        EXPECT_FALSE(QFile::exists(target()));
        EXPECT_FALSE(CliTest::isRunning(pidOfTheTool()));
        EXPECT_EQ(program.errors(), "");
    }

    void expectEndedBeforeTheTool(CliProgram& program) const {
        EXPECT_EQ(program.exitStatus(), 130);
        EXPECT_TRUE(CliTest::isRunning(pidOfTheTool()));
        EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
        EXPECT_FALSE(QFile::exists(target()));
        EXPECT_EQ(program.errors(),
                  "spindrift-cli: Cancelled. The drive has not answered yet and may stay busy for "
                  "a while.\n");
        ::kill(static_cast<pid_t>(pidOfTheTool()), SIGKILL);
    }

    TestFolder folder;
};

TEST_F(InterruptedRipTest, AnInterruptionCancels) {
    imagingHangs();
    CliProgram program(rip());
    ASSERT_TRUE(program.waitForOutput("0.1"));
    program.sendSignal(SIGINT);
    expectCancelledWithoutATrace(program);
}

TEST_F(InterruptedRipTest, ATerminationOrAHangUpCancelsToo) {
    for (const int number : {SIGTERM, SIGHUP}) {
        imagingHangs();
        CliProgram program(rip());
        ASSERT_TRUE(program.waitForOutput("0.1"));
        program.sendSignal(number);
        expectCancelledWithoutATrace(program);
    }
}

TEST_F(InterruptedRipTest, ADriveThatHangsWhileItIsAskedDoesNotKeepTheProgramFromEnding) {
    for (const QStringList& command : {rip(), QStringList{"speed-test"}}) {
        const QString pid = folder.path("pid");
        QFile::remove(pid);
        StubTools::write(folder, "/usr/bin/drutil",
                         "echo $$ > '" + pid.toUtf8() + ".new'\nmv '" + pid.toUtf8() + ".new' '" +
                             pid.toUtf8() + "'\nexec sleep 1000");
        CliProgram program(command);
        ASSERT_TRUE(waitUntil([&] { return QFile::exists(pid); }));
        program.sendSignal(SIGTERM);
        EXPECT_EQ(program.exitStatus(), 130);
        EXPECT_EQ(program.errors(), "");
        ::kill(static_cast<pid_t>(pidOfTheTool()), SIGKILL);
    }
}

TEST_F(InterruptedRipTest, AnInterruptionOfTheWholeJobIsNoFailureOfTheTool) {
    for (int round = 0; round < 10; ++round) {
        imagingHangs();
        CliProgram program(rip(), CliProgram::Group::Own);
        ASSERT_TRUE(program.waitForOutput("0.1"));
        program.sendSignalToGroup(SIGINT);
        expectCancelledWithoutATrace(program);
    }
}

TEST_F(InterruptedRipTest, AnInterruptionIsHeardBeforeTheDeathOfTheToolThatItKilled) {
    for (int round = 0; round < 5; ++round) {
        imagingHangs();
        CliProgram program(rip(), CliProgram::Group::Own);
        ASSERT_TRUE(program.waitForOutput("0.1"));
        ASSERT_TRUE(program.stop());
        program.sendSignalToGroup(SIGINT);
        ASSERT_TRUE(waitUntil([this] { return CliTest::stateOf(pidOfTheTool()) == 'Z'; }));
        program.sendSignal(SIGCONT);
        expectCancelledWithoutATrace(program);
    }
}

TEST_F(InterruptedRipTest, ADriveThatDoesNotAnswerIsNotWaitedFor) {
    for (const QStringList& command : {rip(), QStringList{"speed-test", "--json"}}) {
        imagingHangsDespiteEverything();
        CliProgram program(command);
        ASSERT_TRUE(program.waitForOutput("0.1"));
        program.sendSignal(SIGINT);
        expectEndedBeforeTheTool(program);
    }
}

TEST_F(InterruptedRipTest, ASecondInterruptionEndsTheProgramAtOnce) {
    imagingHangsDespiteEverything();
    CliProgram program(rip());
    ASSERT_TRUE(program.waitForOutput("0.1"));
    program.sendSignal(SIGINT);
    program.sendSignal(SIGTERM);
    expectEndedBeforeTheTool(program);
}

TEST_F(InterruptedRipTest, AVerificationThatIsNotWaitedForKeepsTheImage) {
    const QByteArray pid = "'" + folder.path("pid").toUtf8() + "'";
    CliTest::writeImagingTool(folder,
                              "printf 0123456789 > \"$image\"\n"
                              "case \"$*\" in *-puppetstrings*) exit 0 ;; esac\n"
                              "trap '' TERM\necho $$ > " +
                                  pid + ".new\nmv " + pid + ".new " + pid +
                                  "\nwhile :; do sleep 0.05; done");
    CliProgram program(rip({"--thorough"}));
    ASSERT_TRUE(waitUntil([this] { return QFile::exists(folder.path("pid")); }));
    program.sendSignal(SIGINT);
    EXPECT_EQ(program.exitStatus(), 130);
    EXPECT_EQ(TestFolder::read(target()), QByteArray("0123456789"));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    ::kill(static_cast<pid_t>(pidOfTheTool()), SIGKILL);
}

TEST_F(InterruptedRipTest, ACancelledRipWithForceRemovesWhatStoodThere) {
    folder.write("out.iso", "old");
    imagingHangs();
    CliProgram program(rip({"--force"}));
    ASSERT_TRUE(program.waitForOutput("0.1"));
    EXPECT_EQ(TestFolder::read(target()), QByteArray("old"));
    program.sendSignal(SIGINT);
    expectCancelledWithoutATrace(program);
}

TEST_F(InterruptedRipTest, AReaderThatLeavesEndsTheRip) {
    imagingHangs();
    QProcess shell;
    const QString pipeline = QStringLiteral("\"$0\" \"$@\" | head -n 2; echo ${PIPESTATUS[0]}");
    shell.start("/bin/bash", QStringList{"-c", pipeline, SPINDRIFT_CLI} + rip());
    ASSERT_TRUE(shell.waitForFinished(100'000));
    EXPECT_TRUE(shell.readAllStandardOutput().endsWith("\n130\n"));
    EXPECT_THAT(CliTest::temporaryImages(folder), IsEmpty());
    EXPECT_FALSE(CliTest::isRunning(pidOfTheTool()));
}

}  // namespace
