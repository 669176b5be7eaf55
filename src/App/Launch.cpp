#include "Launch.h"

#include <unistd.h>

#include <QApplication>
#include <cerrno>
#include <cstdio>

#include "BackgroundThread.h"
#include "Descriptor.h"
#include "ErrorText.h"
#include "Interruption.h"
#include "LaunchOptions.h"
#include "PracticeFolder.h"
#include "ProcessTree.h"
#include "SpindriftApp.h"
#include "TemporaryImages.h"
#include "WriteAll.h"

namespace {

constexpr int exitFailed = 1;
constexpr int exitUsage = 64;
constexpr std::chrono::seconds longestTidying{5};

void print(FILE* stream, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stream);
}

// Qt ends the process when it can open no display. Whoever sits at a terminal is told what to do
// instead of being shown a list of plugins.
void explainMissingDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type == QtFatalMsg) {
        std::fputs(
            "spindrift: No display can be opened. Start it in a graphical session, or make the "
            "image in this terminal with \"spindrift-cli rip --output FILE\".\n",
            stderr);
        _exit(exitFailed);
    }
}

// By the display, the event loop and the bus, before anything is done.
constexpr size_t neededDescriptors = 32;

constexpr int statusOfSignals = 128;  // and the number, as in a shell

constexpr Interruption::Ending endingOfWindows = {
    [](int number) { return statusOfSignals + number; },
    [] {
        writeAll(STDERR_FILENO,
                 "spindrift: The drive has not answered yet and may stay busy for a while.\n");
    }};

}  // namespace

int launch(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    QString error;
    const auto options = LaunchOptions::parse(arguments, &error);
    if (!options) {
        print(stderr, QStringLiteral("spindrift: ") + error + QLatin1Char('\n'));
        return exitUsage;
    }
    if (options->help) {
        print(stdout, LaunchOptions::helpText());
        return 0;
    }
    if (options->version) {
        print(stdout, QStringLiteral("Spindrift " SPINDRIFT_VERSION "\n"));
        return 0;
    }

    if (!Descriptor::areFree(neededDescriptors)) {
        print(stderr, QStringLiteral("spindrift: ") + errorText(errno) + QLatin1Char('\n'));
        return 1;
    }
    ProcessTree::letToolsWatchThisProcess();
    const QtMessageHandler usual = qInstallMessageHandler(explainMissingDisplay);
    QApplication application(argc, argv);
    qInstallMessageHandler(usual);
    SpindriftApp::describe();
    Interruption interruption(endingOfWindows);
    Interruption::begin();
    if (options->practice) {
        const auto drive = PracticeFolder::prepare(options->practiceImage, &error);
        if (!drive) {
            print(stderr, QStringLiteral("spindrift: ") + error + QLatin1Char('\n'));
            return exitFailed;
        }
        print(stdout, QCoreApplication::translate("Launch",
                                                  "Using the practice drive with %1 in its tray.\n")
                          .arg(drive->disc()));
    }
    int status = 0;
    {
        TemporaryImages::removeAbandoned();
        SpindriftApp app;
        QObject::connect(&interruption, &Interruption::interrupted, &app, &SpindriftApp::abandon);
        app.openMainWindow();
        status = QApplication::exec();
    }
    // A verification tells how it ended before it removes its second image, which is as large as
    // the disc.
    BackgroundThread::waitForPassing(longestTidying);
    return Interruption::happened() ? Interruption::exitStatus() : status;
}
