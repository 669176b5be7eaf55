// One main window: the menu bar above the content, whose size the window always has.
//
// Made by the application's object; deletes itself, with its models, when it is closed. Main
// thread.
#pragma once

#include <QWidget>

class ContentView;
class QAction;
class QMenu;
class QMenuBar;

class MainWindow final : public QWidget {
    Q_OBJECT

public:
    // The Retro Mode command is one for all windows, and borrowed.
    explicit MainWindow(QAction* retroMode, QWidget* parent = nullptr);

    ContentView& content() { return *m_content; }

signals:
    void newWindowRequested();
    void settingsRequested();
    void aboutRequested();
    void quitRequested();
    // It was to close, and stays because what it does goes on.
    void keptOpen();
    // The menu with the Retro Mode command is about to be shown.
    void viewMenuOpening();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void addMenus(QMenuBar* bar, QAction* retroMode);
    void addEditMenu(QMenuBar* bar);

    ContentView* m_content;
};
