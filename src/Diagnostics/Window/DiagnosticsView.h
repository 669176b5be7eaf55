// The "Drive Diagnostics" window: the drive and its nickname, a speed test, the history of speeds.
//
// A window-modal sheet of the main window, on the main thread; open it with open(). Owns its speed
// tester; borrows the window's monitor and store, which must outlive it. "Done" cancels a running
// test before it closes, and so does every other way to close the sheet: nobody could see the test.
// The tester of a cancelled test stays until the tool has ended, so that no temporary image
// remains.
#pragma once

#include <QDialog>
#include <QTimer>
#include <memory>

#include "SpeedTester.h"

class DiagnosticsStore;
class HistoryList;
class OpticalDriveMonitor;
class QLineEdit;
class SpeedTestPanel;
class SymbolLabel;
class TextLabel;

class DiagnosticsView final : public QDialog {
    Q_OBJECT

public:
    DiagnosticsView(const OpticalDriveMonitor& monitor, DiagnosticsStore& diagnostics,
                    QWidget* parent);
    ~DiagnosticsView() override;

    SpeedTester& tester() { return *m_tester; }

public slots:
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* makeHeader();
    QWidget* makeDrive();
    void syncNicknameField();
    void saveNickname();
    void recordResult();
    void cancelTest();
    void scheduleRefresh();
    void refresh();

    const OpticalDriveMonitor& m_monitor;
    DiagnosticsStore& m_diagnostics;
    std::unique_ptr<SpeedTester> m_tester;
    QTimer m_refresh;
    bool m_historyChanged = false;

    QWidget* m_drive = nullptr;
    TextLabel* m_model = nullptr;
    QLineEdit* m_nickname = nullptr;
    SymbolLabel* m_noDrive = nullptr;
    SpeedTestPanel* m_test = nullptr;
    HistoryList* m_history = nullptr;
};
