// The application: its windows and the commands that belong to no single one.
//
// Made once after the QApplication; main thread. Main windows own themselves; this keeps weak
// handles to the settings window and the About panel, of which there is at most one each.
#pragma once

#include <QAction>
#include <QObject>
#include <QPointer>

#include "Preferences.h"

class AboutPanel;
class MainWindow;
class SettingsWindow;

class SpindriftApp final : public QObject {
    Q_OBJECT

public:
    explicit SpindriftApp(QObject* parent = nullptr);
    ~SpindriftApp() override;

    // Sets what every run of the program has: names, version, icon. Before the first window.
    static void describe();

    MainWindow* openMainWindow();
    void showSettings();
    void showAboutPanel();
    // Closes all windows, which ends the program. One that still has something to ask holds that up
    // until it is answered, or stops it.
    void quit();
    // The same without a question: what runs is cancelled and leaves nothing.
    void abandon();

    QAction* retroModeAction() { return &m_retroModeAction; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void mainWindowClosed();
    void closeMainWindows();
    void followRetroMode();

    Preferences m_preferences;
    QAction m_retroModeAction;
    QPointer<SettingsWindow> m_settings;
    QPointer<AboutPanel> m_about;
    int m_mainWindows = 0;
    bool m_quitting = false;
};
