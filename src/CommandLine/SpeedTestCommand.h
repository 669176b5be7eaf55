// "speed-test": measures the drive's reading speed and records it as the diagnostics window does.
//
// Owned by the program's entry, lives on the main thread. run() once; it runs the event loop until
// the test is over or an interruption has cancelled it.
#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>
#include <optional>

#include "CommandContext.h"
#include "OpticalDriveMonitor.h"
#include "ProgressPrinter.h"
#include "SpeedTester.h"

class Interruption;

class SpeedTestCommand final : public QObject {
    Q_OBJECT

public:
    SpeedTestCommand(const CommandContext& context, Interruption& interruption);
    ~SpeedTestCommand() override;

    // The exit status.
    int run();

private:
    void printChangesAsJson();
    void cancel();
    void cancelWithoutAReader();
    ProgressState progressState() const;
    // Called after the tester has published all that belongs together.
    void exitOnceOver();
    // The exit status.
    int reportOutcome();

    const CommandContext& m_context;
    Interruption& m_interruption;
    OpticalDriveMonitor m_monitor;
    SpeedTester m_tester;
    ProgressPrinter m_printer;
    QElapsedTimer m_elapsed;
    double m_bytesPerSecond = 0;  // on average, at the last sample
    QEventLoop m_loop;
    bool m_cancelled = false;
};
