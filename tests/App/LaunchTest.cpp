// The built program from outside, as far as it needs no display.
#include <gtest/gtest.h>

#include <QProcess>

#include "TestFolder.h"

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
