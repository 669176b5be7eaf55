// "rip": images the disc as the window does, with the same session around the same engine.
//
// Owned by the program's entry, lives on the main thread. run() once; it runs the event loop until
// the rip, its verification and the eject are over, or until an interruption has cancelled them.
#pragma once

#include <QEventLoop>
#include <QObject>
#include <memory>
#include <optional>

#include "CommandContext.h"
#include "ISORipper.h"
#include "OpticalDriveMonitor.h"
#include "RipReport.h"
#include "RipSession.h"

class Interruption;

class RipCommand final : public QObject {
    Q_OBJECT

public:
    RipCommand(const CommandContext& context, Interruption& interruption);
    ~RipCommand() override;

    // The exit status.
    int run();

private:
    void cancel(ISORipper::CancelRemoves removes);
    // A rip whose output nobody reads any more must not run on unseen.
    void cancelWithoutAReader();
    // Ends the event loop once all is over; called after the engine has published all that belongs
    // together.
    void exitOnceOver();
    // The exit status; absent while the rip or its verification runs.
    std::optional<int> outcome() const;
    void printOutcome(int status);
    void printRemarks();
    void printVerdict(const VerifyStatus& verdict);

    const CommandContext& m_context;
    Interruption& m_interruption;
    OpticalDriveMonitor m_monitor;
    ISORipper m_ripper;
    std::unique_ptr<RipReport> m_report;
    RipSession m_session;
    QEventLoop m_loop;
    QString m_target;
    bool m_cancelled = false;
    bool m_ejectFailed = false;
};
