// The built program from outside, as far as it needs no display.
#include <gtest/gtest.h>

#include <QProcess>
#include <csignal>

#include "DriveStubs.h"
#include "Preferences.h"
#include "StubTools.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

struct Outcome {
    int status = -1;
    QString output;
    QString error;
};

// Runs the program without any display.
Outcome run(const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE"}) {
        environment.remove(QLatin1String(name));
    }
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(SPINDRIFT_PROGRAM), arguments);
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

}  // namespace

TEST(LaunchTest, ASignalEndsTheWindowWithoutAQuestion) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        TestFolder folder;
        Preferences().set(Preference::HasCompletedOnboarding, true);
        DriveStubs::disc(folder, {});
        QProcess process;
        process.start(QStringLiteral(SPINDRIFT_PROGRAM), QStringList());
        // The window that shows the drive is there, and so is whoever is told of the signal.
        ASSERT_TRUE(waitUntil([&] { return !StubTools::log(folder).isEmpty(); }));
        ::kill(static_cast<pid_t>(process.processId()), number);
        EXPECT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 128 + number);
        EXPECT_FALSE(process.readAllStandardError().contains("spindrift:")) << "nothing keeps it";
    }
}

TEST(LaunchTest, ADriveThatHangsDoesNotKeepTheWindowFromEnding) {
    TestFolder folder;
    Preferences().set(Preference::HasCompletedOnboarding, true);
    StubTools::write(folder, StubTools::drutil, "trap '' TERM\nexec sleep 1000");
    QProcess process;
    process.start(QStringLiteral(SPINDRIFT_PROGRAM), QStringList());
    ASSERT_TRUE(waitUntil([&] { return !StubTools::log(folder).isEmpty(); }));
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitCode(), 128 + SIGTERM);
    // Qt's offscreen platform has remarks of its own.
    EXPECT_TRUE(process.readAllStandardError().endsWith(
        "spindrift: The drive has not answered yet and may stay busy for a while.\n"));
}

TEST(LaunchTest, TooFewFreeDescriptorsAreAnErrorAndNoCrash) {
    const TestFolder folder;
    for (const char* count : {"8", "12", "20", "30"}) {
        QProcess shell;
        shell.start("/bin/sh", {"-c", "ulimit -n $1; exec \"$0\"", SPINDRIFT_PROGRAM, count});
        ASSERT_TRUE(shell.waitForFinished(60000));
        EXPECT_EQ(shell.exitStatus(), QProcess::NormalExit) << count;
        EXPECT_EQ(shell.exitCode(), 1) << count;
        EXPECT_EQ(shell.readAllStandardError(), "spindrift: Too many open files\n") << count;
    }
}

TEST(LaunchTest, WithoutADisplayItSaysWhatToDo) {
    const TestFolder folder;
    const Outcome result = run({});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, QString());
    EXPECT_EQ(result.error.count(QLatin1Char('\n')), 1) << qPrintable(result.error);
    EXPECT_TRUE(result.error.contains(QStringLiteral("No display can be opened")));
    EXPECT_TRUE(result.error.contains(QStringLiteral("spindrift-cli")));
}

TEST(LaunchTest, HelpAndVersionNeedNoDisplay) {
    const Outcome help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.startsWith(QStringLiteral("Usage: spindrift")));
    EXPECT_EQ(help.error, QString());
    const Outcome version = run({QStringLiteral("--version")});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, QStringLiteral("Spindrift " SPINDRIFT_VERSION "\n"));
}

TEST(LaunchTest, AnUnknownOptionIsAUsageError) {
    const Outcome result = run({QStringLiteral("--frobnicate")});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.output, QString());
    EXPECT_TRUE(result.error.contains(QStringLiteral("--frobnicate")));
}
