// The content of the main window: the drive and its disc, the destination, the rip.
//
// Owns the window's models for its whole life; main thread. Polls the drive while it is on screen.
// What it shows is worked out anew from the models once per turn of the event loop in which any of
// them changed.
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include "DiagnosticsStore.h"
#include "ISORipper.h"
#include "OpticalDriveMonitor.h"
#include "Preferences.h"
#include "RipSession.h"

class ActionRow;
class CancelConfirmation;
class DestinationRow;
class DiscSummaryView;
class HeaderView;
class PinstripeBackground;
class QDialog;
class RipProgressView;
class SymbolLabel;

class ContentView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int contentWidth = 460;

    explicit ContentView(QWidget* parent = nullptr);
    ~ContentView() override;

    OpticalDriveMonitor& monitor() { return m_monitor; }
    ISORipper& ripper() { return m_ripper; }
    DiagnosticsStore& diagnostics() { return m_diagnostics; }
    RipSession& session() { return m_session; }

    // A rip or a verification runs.
    bool isWorking() const { return m_ripper.isRunning() || m_ripper.isVerifying(); }

    // Whether the window may close now. While something runs it may not: then the cancel
    // confirmation opens, and the window closes by itself once what runs has been cancelled.
    bool mayClose();

    // Cancels all that runs without a question, whatever stands at the destination staying; then
    // the window closes by itself.
    void abandon();

public slots:
    void chooseDestination();
    void confirmCancel();
    void showDiagnostics();
    void showOnboarding();

signals:
    // The window was to close, and stays: the user has chosen to go on with what runs, or it ended
    // badly before the choice.
    void keptOpen();

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void takeDestination(const QString& path);
    void addParts();
    void connectParts();
    void scheduleRefresh();
    void refresh();
    void refreshAppearance(bool retro);
    void refreshConfirmation();
    // Whether the last rip ended in a way that its user has to see.
    bool hasBadNews() const;
    void offerOnboarding();
    bool isFront() const;

    OpticalDriveMonitor m_monitor;
    ISORipper m_ripper;
    DiagnosticsStore m_diagnostics;
    Preferences m_preferences;
    RipSession m_session;

    HeaderView* m_header;
    DiscSummaryView* m_disc;
    SymbolLabel* m_noDrive;
    SymbolLabel* m_noDisc;
    DestinationRow* m_destination;
    SymbolLabel* m_lackOfRoom;
    RipProgressView* m_progress;
    ActionRow* m_actions;
    QPointer<PinstripeBackground> m_pinstripes;  // made when Retro Mode first needs it

    QPointer<QDialog> m_destinationDialog;
    QPointer<CancelConfirmation> m_confirmation;
    QPointer<QDialog> m_diagnosticsSheet;
    QPointer<QDialog> m_onboardingSheet;

    QTimer m_refreshTimer;
    bool m_justShown = false;  // until the first paint after that
    bool m_retroShown = false;
    bool m_closeOnceCancelled = false;
    bool m_isAbandoned = false;
};
