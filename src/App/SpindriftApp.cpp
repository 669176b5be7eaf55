#include "SpindriftApp.h"

#include <QApplication>
#include <QKeyEvent>

#include "AboutPanel.h"
#include "Appearance.h"
#include "ContentView.h"
#include "MainWindow.h"
#include "NotificationManager.h"
#include "SettingsWindow.h"
#include "Symbol.h"
#include "SystemAppearance.h"

namespace {

QList<MainWindow*> mainWindows() {
    QList<MainWindow*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<MainWindow*>(widget)) {
            windows << window;
        }
    }
    return windows;
}

}  // namespace

SpindriftApp::SpindriftApp(QObject* parent) : QObject(parent), m_retroModeAction(tr("Retro Mode")) {
    NotificationManager::requestAuthorization();
    SystemAppearance::prepare();
    Appearance::follow();

    m_retroModeAction.setObjectName(QStringLiteral("retroModeAction"));
    m_retroModeAction.setCheckable(true);
    m_retroModeAction.setChecked(m_preferences.value(Preference::RetroMode));
    m_retroModeAction.setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    // Flips what is stored, which the terminal program may have changed since the last look.
    connect(&m_retroModeAction, &QAction::triggered, this, [this] {
        m_preferences.set(Preference::RetroMode, !m_preferences.value(Preference::RetroMode));
        followRetroMode();
    });
    connect(&m_preferences, &Preferences::changed, this, &SpindriftApp::followRetroMode);
    m_preferences.followOtherProcesses();
    qApp->installEventFilter(this);
}

SpindriftApp::~SpindriftApp() {
    qApp->removeEventFilter(this);
    delete m_settings;
    delete m_about;
}

void SpindriftApp::describe() {
    QApplication::setApplicationName(QStringLiteral("Spindrift"));
    QApplication::setOrganizationName(QStringLiteral("Spindrift"));
    QApplication::setApplicationVersion(QStringLiteral(SPINDRIFT_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("spindrift"));
    QApplication::setWindowIcon(Symbol::applicationIcon());
}

MainWindow* SpindriftApp::openMainWindow() {
    auto* window = new MainWindow(&m_retroModeAction);
    ++m_mainWindows;
    connect(window, &MainWindow::newWindowRequested, this, &SpindriftApp::openMainWindow);
    connect(window, &MainWindow::settingsRequested, this, &SpindriftApp::showSettings);
    connect(window, &MainWindow::aboutRequested, this, &SpindriftApp::showAboutPanel);
    connect(window, &MainWindow::quitRequested, this, &SpindriftApp::quit);
    connect(window, &MainWindow::viewMenuOpening, this, &SpindriftApp::followRetroMode);
    connect(window, &MainWindow::keptOpen, this, [this] { m_quitting = false; });
    connect(window, &QObject::destroyed, this, &SpindriftApp::mainWindowClosed);
    window->show();
    return window;
}

void SpindriftApp::mainWindowClosed() {
    // Nothing else can be reached without a main window, so the others do not keep the program.
    // A panel that goes without having been closed does not count as the last window.
    if (--m_mainWindows == 0) {
        delete m_settings;
        delete m_about;
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    } else if (m_quitting) {
        QMetaObject::invokeMethod(this, &SpindriftApp::closeMainWindows, Qt::QueuedConnection);
    }
}

void SpindriftApp::showSettings() {
    if (!m_settings) {
        m_settings = new SettingsWindow;
    }
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
}

void SpindriftApp::showAboutPanel() {
    if (!m_about) {
        m_about = new AboutPanel;
        m_about->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_about->show();
    m_about->raise();
    m_about->activateWindow();
}

void SpindriftApp::followRetroMode() {
    m_retroModeAction.setChecked(m_preferences.value(Preference::RetroMode));
}

void SpindriftApp::quit() {
    m_quitting = true;
    QApplication::closeAllWindows();
}

void SpindriftApp::abandon() {
    for (MainWindow* window : mainWindows()) {
        window->content().abandon();
    }
}

void SpindriftApp::closeMainWindows() {
    // Not closeAllWindows(), which would begin with the questions that are open.
    for (MainWindow* window : mainWindows()) {
        if (window->isVisible()) {
            window->close();
        }
    }
}

bool SpindriftApp::eventFilter(QObject* watched, QEvent* event) {
    // A sheet blocks the menus of its window, and the settings window has none; the command works
    // in both all the same.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (QKeySequence(key->keyCombination()) == m_retroModeAction.shortcut()) {
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (QKeySequence(key->keyCombination()) == m_retroModeAction.shortcut()) {
            if (!key->isAutoRepeat()) {
                m_retroModeAction.trigger();
            }
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

#include "moc_SpindriftApp.cpp"
