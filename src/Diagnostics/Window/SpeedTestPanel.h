// The speed test in the diagnostics window: its button, or its progress and what it has read.
//
// Owned by the diagnostics window, main thread. Shows the tester and the monitor; starts and
// cancels tests when its buttons are pressed.
#pragma once

#include <QWidget>

class OpticalDriveMonitor;
class QLabel;
class QProgressBar;
class QPushButton;
class SpeedTester;
class SymbolLabel;
class TextLabel;

class SpeedTestPanel final : public QWidget {
    Q_OBJECT

public:
    SpeedTestPanel(const OpticalDriveMonitor& monitor, SpeedTester& tester,
                   QWidget* parent = nullptr);

    // Shows the models as they are now.
    void refresh();

private:
    void startTest();

    const OpticalDriveMonitor& m_monitor;
    SpeedTester& m_tester;
    TextLabel* m_disc;
    QWidget* m_running;
    QProgressBar* m_bar;
    TextLabel* m_bytes;
    QPushButton* m_cancel;
    QPushButton* m_run;
    SymbolLabel* m_error;
};
