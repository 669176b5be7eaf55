#include "MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QShortcut>
#include <QVBoxLayout>

#include "Accessibility.h"
#include "ContentView.h"
#include "InAppNotifications.h"

MainWindow::MainWindow(QAction* retroMode, QWidget* parent)
    : QWidget(parent, Qt::Window), m_content(nullptr) {
    setObjectName(QStringLiteral("mainWindow"));
    // Before the title, whose change makes the interface that keeps the role.
    Accessibility::setRole(this, QAccessible::Window);
    setWindowTitle(tr("Spindrift"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    auto* bar = new QMenuBar(this);
    addMenus(bar, retroMode);
    connect(new QShortcut(QKeySequence(Qt::Key_F10), this), &QShortcut::activated, bar,
            [bar] { bar->setActiveAction(bar->actions().constFirst()); });
    outer->setMenuBar(bar);
    m_content = new ContentView(this);
    outer->addWidget(m_content);
    connect(m_content, &ContentView::keptOpen, this, &MainWindow::keptOpen);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->setAccepted(m_content->mayClose());
}

void MainWindow::addMenus(QMenuBar* bar, QAction* retroMode) {
    QMenu* file = bar->addMenu(tr("&File"));
    QAction* newWindow = file->addAction(tr("&New Window"), this, &MainWindow::newWindowRequested);
    newWindow->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_N));
    QAction* close = file->addAction(tr("&Close"), this, &QWidget::close);
    close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    file->addSeparator();
    QAction* settings =
        file->addAction(tr("&Settings\u2026"), this, &MainWindow::settingsRequested);
    settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    file->addSeparator();
    QAction* quit = file->addAction(tr("&Quit"), this, &MainWindow::quitRequested);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

    addEditMenu(bar);

    QMenu* view = bar->addMenu(tr("&View"));
    view->addAction(retroMode);
    connect(view, &QMenu::aboutToShow, this, &MainWindow::viewMenuOpening);

    QMenu* help = bar->addMenu(tr("&Help"));
    QAction* access =
        help->addAction(tr("Full Disk Access Setup\u2026"), &InAppNotifications::shared(),
                        &InAppNotifications::showOnboarding);
    help->addSeparator();
    QAction* about = help->addAction(tr("About Spindrift"), this, &MainWindow::aboutRequested);

    newWindow->setObjectName(QStringLiteral("newWindowAction"));
    close->setObjectName(QStringLiteral("closeAction"));
    settings->setObjectName(QStringLiteral("settingsAction"));
    quit->setObjectName(QStringLiteral("quitAction"));
    access->setObjectName(QStringLiteral("fullDiskAccessAction"));
    about->setObjectName(QStringLiteral("aboutAction"));
}

void MainWindow::addEditMenu(QMenuBar* bar) {
    // The standard commands, for whatever text field has the keyboard's focus.
    QMenu* edit = bar->addMenu(tr("&Edit"));
    const auto add = [edit](const QString& text, QKeySequence::StandardKey keys, auto command) {
        QAction* action = edit->addAction(text);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, edit, [command] {
            if (auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget())) {
                (field->*command)();
            }
        });
    };
    add(tr("&Undo"), QKeySequence::Undo, &QLineEdit::undo);
    add(tr("&Redo"), QKeySequence::Redo, &QLineEdit::redo);
    edit->addSeparator();
    add(tr("Cu&t"), QKeySequence::Cut, &QLineEdit::cut);
    add(tr("&Copy"), QKeySequence::Copy, &QLineEdit::copy);
    add(tr("&Paste"), QKeySequence::Paste, &QLineEdit::paste);
    edit->addSeparator();
    add(tr("Select &All"), QKeySequence::SelectAll, &QLineEdit::selectAll);
    connect(edit, &QMenu::aboutToShow, edit, [edit] {
        const bool field = qobject_cast<QLineEdit*>(QApplication::focusWidget()) != nullptr;
        for (QAction* action : edit->actions()) {
            action->setEnabled(field);
        }
    });
}

#include "moc_MainWindow.cpp"
