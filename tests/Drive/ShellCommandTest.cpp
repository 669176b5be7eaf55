#include "ShellCommand.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <QFile>
#include <future>
#include <vector>

#include "StubTools.h"
#include "TestFolder.h"

namespace {

using ShellCommand::Result;

const QString shell = QStringLiteral("/bin/sh");

class ShellCommandTest : public testing::Test {
protected:
    static Result sh(const QString& script, const QStringList& arguments = {}) {
        return ShellCommand::run(
            shell, QStringList{QStringLiteral("-c"), script, QStringLiteral("sh")} + arguments);
    }

    TestFolder folder;
};

TEST_F(ShellCommandTest, BothStreamsAndTheStatusComeBackApart) {
    const Result result = sh(QStringLiteral("echo out; echo err >&2; exit 3"));
    EXPECT_EQ(result, (Result{QStringLiteral("out\n"), QStringLiteral("err\n"), 3}));
}

TEST_F(ShellCommandTest, AToolThatPrintsNothingYieldsEmptyTextsAndItsStatus) {
    EXPECT_EQ(sh(QStringLiteral("exit 0")), (Result{QString(), QString(), 0}));
    EXPECT_EQ(sh(QStringLiteral("exit 255")), (Result{QString(), QString(), 255}));
}

TEST_F(ShellCommandTest, InvalidUtf8OnStandardOutputEmptiesThatStreamOnly) {
    const Result result = sh(QStringLiteral("printf 'a\\377b'; printf kept >&2; exit 4"));
    EXPECT_EQ(result, (Result{QString(), QStringLiteral("kept"), 4}));
}

TEST_F(ShellCommandTest, InvalidUtf8OnStandardErrorEmptiesThatStreamOnly) {
    const Result result = sh(QStringLiteral("printf 'kept \\303\\251'; printf '\\303' >&2"));
    EXPECT_EQ(result, (Result{QString::fromUtf8("kept \u00e9"), QString(), 0}));
}

TEST_F(ShellCommandTest, TextIsHandedBackToTheByte) {
    EXPECT_EQ(sh(QStringLiteral("printf ' \\r\\n\\n a\\tb '")).standardOutput,
              QStringLiteral(" \r\n\n a\tb "));
}

TEST_F(ShellCommandTest, AMissingToolIsALaunchFailureThatNamesThePathAsGiven) {
    const Result result = ShellCommand::run(QStringLiteral("/no/such tool"), {});
    EXPECT_EQ(result, (Result{QString(),
                              QStringLiteral("Failed to launch /no/such tool: "
                                             "No such file or directory"),
                              -1}));
}

TEST_F(ShellCommandTest, AToolThatMayNotBeRunIsALaunchFailure) {
    const QString path = folder.write(QStringLiteral("plain"), "#!/bin/sh\n");
    EXPECT_EQ(ShellCommand::run(path, {}).standardError,
              QStringLiteral("Failed to launch ") + path + QStringLiteral(": Permission denied"));
    EXPECT_EQ(ShellCommand::run(path, {}).exitCode, -1);
}

TEST_F(ShellCommandTest, AFolderIsNoTool) {
    EXPECT_EQ(ShellCommand::run(folder.path(), {}).exitCode, -1);
}

TEST_F(ShellCommandTest, AFileThatIsNoProgramIsALaunchFailureOfTheFixedPath) {
    const QString stub = folder.write(QStringLiteral("tools/usr/bin/drutil"), "no program");
    ASSERT_TRUE(QFile::setPermissions(stub, QFile::ReadOwner | QFile::ExeOwner));
    EXPECT_EQ(ShellCommand::run(QStringLiteral("/usr/bin/drutil"), {}).standardError,
              QStringLiteral("Failed to launch /usr/bin/drutil: Exec format error"));
}

TEST_F(ShellCommandTest, ArgumentsReachTheToolUnchanged) {
    const QStringList arguments{
        QStringLiteral("two words"),   QStringLiteral("$HOME `id` \"'"),
        QStringLiteral("*?[a]"),       QString(),
        QStringLiteral("; exit 9"),    QStringLiteral("a\nb\\n"),
        QStringLiteral("~"),           QString::fromUtf8("\u00e9\U0001F4BF"),
        QStringLiteral(" \t ends\n "), QStringLiteral("  ")};
    const Result result =
        sh(QStringLiteral("for a in \"$@\"; do printf '<%s>' \"$a\"; done"), arguments);
    EXPECT_EQ(result.standardOutput,
              QLatin1Char('<') + arguments.join(QStringLiteral("><")) + QLatin1Char('>'));
}

TEST_F(ShellCommandTest, NoProgramPathIsSearched) {
    EXPECT_EQ(ShellCommand::run(QStringLiteral("sh"), {}).exitCode, -1);
}

TEST_F(ShellCommandTest, ASignalThatEndedTheToolIsItsStatus) {
    const Result result = sh(QStringLiteral("echo partly; kill -9 $$"));
    EXPECT_EQ(result, (Result{QStringLiteral("partly\n"), QString(), 9}));
}

TEST_F(ShellCommandTest, AlmostAPipesFillOfBothStreamsComesBackWhole) {
    const Result result =
        sh(QStringLiteral("head -c 61440 /dev/zero | tr '\\0' x; "
                          "head -c 61440 /dev/zero | tr '\\0' y >&2"));
    EXPECT_EQ(result.standardOutput, QString(61440, QLatin1Char('x')));
    EXPECT_EQ(result.standardError, QString(61440, QLatin1Char('y')));
}

TEST_F(ShellCommandTest, NothingIsReadBeforeTheToolHasEnded) {
    // The tool fills its pipe, and a moment later there is still no room.
    const Result result =
        sh(QStringLiteral("dd if=/dev/zero bs=4096 count=1000 oflag=nonblock 2>/dev/null\n"
                          "sleep 0.1\n"
                          "if dd if=/dev/zero bs=4096 count=1 oflag=nonblock 2>/dev/null; "
                          "then exit 1; fi"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_GT(result.standardOutput.size(), 0);
    EXPECT_LT(result.standardOutput.size(), 1000 * 4096);
}

TEST_F(ShellCommandTest, ThePipesAreReadToTheirEndWhoeverHoldsThem) {
    // What the tool leaves behind writes only when the tool is gone.
    const Result result =
        sh(QStringLiteral("(while kill -0 $$ 2>/dev/null; do sleep 0.01; done; "
                          "echo late; echo late >&2) & echo early; exit 5"));
    EXPECT_EQ(result, (Result{QStringLiteral("early\nlate\n"), QStringLiteral("late\n"), 5}));
}

TEST_F(ShellCommandTest, StandardInputIsInherited) {
    const QString path = folder.write(QStringLiteral("input"), "typed");
    const int before = dup(STDIN_FILENO);
    const int file = open(path.toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(dup2(file, STDIN_FILENO), STDIN_FILENO);
    const Result result = sh(QStringLiteral("cat"));
    if (before >= 0) {
        dup2(before, STDIN_FILENO);
        close(before);
    }
    close(file);
    EXPECT_EQ(result.standardOutput, QStringLiteral("typed"));
}

TEST_F(ShellCommandTest, SeveralThreadsMayRunToolsAtOnce) {
    std::vector<std::future<bool>> all;
    for (int thread = 0; thread < 8; ++thread) {
        all.push_back(std::async(std::launch::async, [thread] {
            const QString word = QString::number(thread);
            for (int run = 0; run < 10; ++run) {
                const Result result = sh(QStringLiteral("echo $1; echo $1 >&2; exit $1"), {word});
                const QString line = word + QLatin1Char('\n');
                if (result != Result{line, line, thread}) {
                    return false;
                }
            }
            return true;
        }));
    }
    for (auto& each : all) {
        EXPECT_TRUE(each.get());
    }
}

TEST_F(ShellCommandTest, TheToolOfTheToolRootStandsInForTheFixedPath) {
    StubTools::write(folder, QStringLiteral("/usr/bin/drutil"), "echo stub");
    EXPECT_EQ(ShellCommand::run(QStringLiteral("/usr/bin/drutil"), {QStringLiteral("status")}),
              (Result{QStringLiteral("stub\n"), QString(), 0}));
    EXPECT_EQ(StubTools::log(folder), QStringList{QStringLiteral("drutil status")});
}

}  // namespace
