#include <gtest/gtest.h>

#include <QAccessible>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QTimer>

#include "AboutPanel.h"
#include "Activation.h"
#include "Appearance.h"
#include "CancelConfirmation.h"
#include "MainWindow.h"
#include "SettingsWindow.h"
#include "SpindriftApp.h"
#include "Symbol.h"
#include "WindowSupport.h"

namespace {

class AppTest : public testing::Test {
protected:
    AppTest() {
        QApplication::setQuitOnLastWindowClosed(false);
        SpindriftApp::describe();
        Preferences().set(Preference::HasCompletedOnboarding, true);
        DriveStubs::disc(folder, {});
    }
    ~AppTest() override {
        // Deleting one takes others with it.
        QList<QPointer<QWidget>> windows;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            windows << widget;
        }
        for (const QPointer<QWidget>& window : windows) {
            if (qobject_cast<MainWindow*>(window) != nullptr) {
                delete window;
            }
        }
        settle();
    }

    // The command in the window's menus, whatever menu it is in.
    static QAction* command(const MainWindow* window, const QString& menuTitle,
                            const QString& title) {
        const auto* bar = window->findChild<QMenuBar*>();
        for (const QAction* menu : bar->actions()) {
            if (menu->text().remove(QLatin1Char('&')) != menuTitle) {
                continue;
            }
            for (QAction* action : menu->menu()->actions()) {
                if (action->text().remove(QLatin1Char('&')) == title) {
                    return action;
                }
            }
        }
        return nullptr;
    }

    template <typename T>
    static T* open() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (T* found = qobject_cast<T*>(widget); found != nullptr && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }

    TestFolder folder;
};

}  // namespace

TEST_F(AppTest, TheMenusHoldTheCommandsAndTheirShortcuts) {
    SpindriftApp app;
    const MainWindow* window = app.openMainWindow();
    QStringList titles;
    for (const QAction* menu : window->findChild<QMenuBar*>()->actions()) {
        titles << menu->text().remove(QLatin1Char('&'));
    }
    EXPECT_EQ(titles, (QStringList{"File", "Edit", "View", "Help"}));
    const struct {
        const char* menu;
        const char* title;
        QKeySequence shortcut;
    } commands[] = {
        {"File", "New Window", QKeySequence(Qt::CTRL | Qt::Key_N)},
        {"File", "Close", QKeySequence(Qt::CTRL | Qt::Key_W)},
        {"File", "Settings\u2026", QKeySequence(Qt::CTRL | Qt::Key_Comma)},
        {"File", "Quit", QKeySequence(Qt::CTRL | Qt::Key_Q)},
        {"Edit", "Copy", QKeySequence(QKeySequence::Copy)},
        {"View", "Retro Mode", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R)},
        {"Help", "Full Disk Access Setup\u2026", QKeySequence()},
        {"Help", "About Spindrift", QKeySequence()},
    };
    for (const auto& expected : commands) {
        const QAction* action =
            command(window, QString::fromUtf8(expected.menu), QString::fromUtf8(expected.title));
        ASSERT_NE(action, nullptr) << expected.title;
        EXPECT_EQ(action->shortcut(), expected.shortcut) << expected.title;
    }
    EXPECT_TRUE(command(window, "View", "Retro Mode")->isCheckable());
}

TEST_F(AppTest, TheWindowIsCalledAfterTheApplicationAndFixedToItsContent) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    settle();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Spindrift"));
    EXPECT_EQ(window->width(), 460);
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(window)->role(), QAccessible::Window);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(window)->text(QAccessible::Name),
              QStringLiteral("Spindrift"));
}

TEST_F(AppTest, RetroModeChangesEveryWindowAtOnceAndTheCheckMarkFollows) {
    SpindriftApp app;
    MainWindow* first = app.openMainWindow();
    MainWindow* second = app.openMainWindow();
    app.showSettings();
    settle();
    auto* box = named<QCheckBox>(open<SettingsWindow>(), "retroModeSwitch");
    const auto isRetro = [](MainWindow* window) {
        return QFontInfo(named<QLabel>(window, "title")->font()).pixelSize() == 20 &&
               QFontInfo(window->content().font()).pixelSize() == 13;
    };

    command(first, "View", "Retro Mode")->trigger();
    settle();
    EXPECT_TRUE(Preferences().value(Preference::RetroMode));
    EXPECT_TRUE(box->isChecked());
    EXPECT_TRUE(isRetro(first));
    EXPECT_TRUE(isRetro(second));

    box->click();
    settle();
    EXPECT_FALSE(command(first, "View", "Retro Mode")->isChecked());
    EXPECT_FALSE(command(second, "View", "Retro Mode")->isChecked());
    EXPECT_FALSE(isRetro(first));
    EXPECT_FALSE(isRetro(second));

    box->click();
    settle();
    EXPECT_TRUE(command(second, "View", "Retro Mode")->isChecked());
}

TEST_F(AppTest, TheCommandFlipsWhatAnotherProgramHasStored) {
    SpindriftApp app;
    const MainWindow* window = app.openMainWindow();
    settle();
    QAction* retro = command(window, "View", "Retro Mode");
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                 "[General]\nretroMode=true\nhasCompletedOnboarding=true\n");
    for (const QAction* menu : window->findChild<QMenuBar*>()->actions()) {
        emit menu->menu()->aboutToShow();
    }
    EXPECT_TRUE(retro->isChecked()) << "the check mark follows when the menu is opened";
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                 "[General]\nhasCompletedOnboarding=true\n");
    retro->trigger();
    EXPECT_TRUE(Preferences().value(Preference::RetroMode)) << "what is stored was off";
    EXPECT_TRUE(retro->isChecked());
}

TEST_F(AppTest, AHeldShortcutFlipsRetroModeOnce) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    settle();
    activate(window);
    const auto modifiers = Qt::ControlModifier | Qt::ShiftModifier;
    QTest::keyClick(window, Qt::Key_R, modifiers);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_R, modifiers, QStringLiteral("R"), true);
    QCoreApplication::sendEvent(window, &repeated);
    settle();
    EXPECT_TRUE(Preferences().value(Preference::RetroMode));
}

TEST_F(AppTest, EscapeAndItsShortcutCloseTheSmallWindows) {
    SpindriftApp app;
    app.openMainWindow();
    for (const auto& [key, modifiers] :
         {std::pair<Qt::Key, Qt::KeyboardModifiers>{Qt::Key_Escape, Qt::NoModifier},
          {Qt::Key_W, Qt::ControlModifier}}) {
        app.showSettings();
        settle();
        activate(open<SettingsWindow>());
        QTest::keyClick(open<SettingsWindow>(), key, modifiers);
        settle();
        EXPECT_EQ(open<SettingsWindow>(), nullptr) << key;
        app.showAboutPanel();
        settle();
        activate(open<AboutPanel>());
        QTest::keyClick(open<AboutPanel>(), key, modifiers);
        settle();
        EXPECT_EQ(open<AboutPanel>(), nullptr) << key;
    }
}

TEST_F(AppTest, TheEditMenuWorksOnTheTextFieldWithTheFocus) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    settle();
    activate(window);
    QMenu* edit = window->findChild<QMenuBar*>()->actions().at(1)->menu();
    emit edit->aboutToShow();
    EXPECT_FALSE(command(window, "Edit", "Select All")->isEnabled()) << "no field";

    QLineEdit field(QStringLiteral("Shelf"));
    field.show();
    activate(&field);
    field.setFocus();
    emit edit->aboutToShow();
    ASSERT_TRUE(command(window, "Edit", "Select All")->isEnabled());
    command(window, "Edit", "Select All")->trigger();
    EXPECT_EQ(field.selectedText(), QStringLiteral("Shelf"));
    command(window, "Edit", "Cut")->trigger();
    EXPECT_EQ(field.text(), QString());
    command(window, "Edit", "Undo")->trigger();
    EXPECT_EQ(field.text(), QStringLiteral("Shelf"));
}

TEST_F(AppTest, F10OpensTheFirstMenu) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    settle();
    activate(window);
    QTest::keyClick(window, Qt::Key_F10);
    auto* menu = window->findChild<QMenuBar*>()->actions().constFirst()->menu();
    EXPECT_TRUE(menu->isVisible());
    QTest::keyClick(menu, Qt::Key_Escape);
    EXPECT_FALSE(menu->isVisible());
}

TEST_F(AppTest, TheShortcutWorksWhateverWindowIsFrontmost) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    app.showSettings();
    app.showAboutPanel();
    settle();
    bool retro = false;
    const auto press = [&](QWidget* front, const char* what) {
        activate(front);
        QTest::keyClick(front, Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
        settle();
        retro = !retro;
        EXPECT_EQ(Preferences().value(Preference::RetroMode), retro) << what;
    };
    press(window, "the main window");
    press(open<SettingsWindow>(), "the settings window");
    press(open<AboutPanel>(), "the About panel");
    window->content().showDiagnostics();
    settle();
    press(window->findChild<QDialog*>(), "a sheet");
    EXPECT_EQ(app.retroModeAction()->isChecked(), retro);
}

TEST_F(AppTest, TheMenuCommandOpensTheGuideAfterOnboardingToo) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    settle();
    activate(window);
    command(window, "Help", "Full Disk Access Setup\u2026")->trigger();
    settle();
    const auto* guide = window->findChild<QDialog*>();
    ASSERT_NE(guide, nullptr);
    EXPECT_TRUE(guide->isVisible());
    EXPECT_TRUE(guide->inherits("OnboardingView"));
}

TEST_F(AppTest, TheSettingsWindowOpensOnceAndClosesByItsShortcut) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    settle();
    activate(window);
    QTest::keyClick(window, Qt::Key_Comma, Qt::ControlModifier);
    settle();
    auto* settings = open<SettingsWindow>();
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(settings->width(), 440);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(settings)->role(), QAccessible::Window);
    app.showSettings();
    EXPECT_EQ(open<SettingsWindow>(), settings);
    activate(settings);
    QTest::keyClick(settings, Qt::Key_W, Qt::ControlModifier);
    settle();
    EXPECT_EQ(open<SettingsWindow>(), nullptr);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(AppTest, ANewWindowHasItsOwnModels) {
    SpindriftApp app;
    MainWindow* first = app.openMainWindow();
    settle();
    activate(first);
    QTest::keyClick(first, Qt::Key_N, Qt::ControlModifier);
    settle();
    int windows = 0;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = qobject_cast<MainWindow*>(widget);
        if (window != nullptr && window->isVisible()) {
            ++windows;
            EXPECT_TRUE(window == first ||
                        &window->content().monitor() != &first->content().monitor());
        }
    }
    EXPECT_EQ(windows, 2);
}

TEST_F(AppTest, TheLastMainWindowTakesTheSettingsWithIt) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    app.showSettings();
    app.showAboutPanel();
    settle();
    activate(window);
    QTest::keyClick(window, Qt::Key_W, Qt::ControlModifier);
    settle();
    EXPECT_EQ(open<MainWindow>(), nullptr);
    EXPECT_EQ(open<SettingsWindow>(), nullptr);
    EXPECT_EQ(open<AboutPanel>(), nullptr);
}

TEST_F(AppTest, TheProgramEndsWithItsLastMainWindowWhateverElseIsOpen) {
    QApplication::setQuitOnLastWindowClosed(true);
    for (const bool panel : {false, true}) {
        SpindriftApp app;
        MainWindow* window = app.openMainWindow();
        app.showSettings();
        if (panel) {
            app.showAboutPanel();
        }
        settle();
        QTimer giveUp;
        giveUp.callOnTimeout([] { QCoreApplication::exit(1); });
        giveUp.start(20000);
        QTimer::singleShot(0, window, &QWidget::close);
        EXPECT_EQ(QApplication::exec(), 0) << "with the About panel: " << panel;
    }
}

TEST_F(AppTest, TheWindowsFollowWhatAnotherProcessWrites) {
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    app.showSettings();
    settle();
    const auto* retro = named<QCheckBox>(open<SettingsWindow>(), "retroModeSwitch");
    const auto* eject = named<QCheckBox>(open<SettingsWindow>(), "ejectWhenDoneSwitch");
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                 "[General]\nretroMode=true\nejectWhenDone=false\nhasCompletedOnboarding=true\n");
    ASSERT_TRUE(waitUntil([&] { return retro->isChecked() && !eject->isChecked(); }));
    EXPECT_TRUE(app.retroModeAction()->isChecked());
    settle();
    EXPECT_EQ(QFontInfo(window->content().font()).pixelSize(), 13);
}

TEST_F(AppTest, QuittingDuringARipAsksFirst) {
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1000);
    SpindriftApp app;
    QPointer<MainWindow> window = app.openMainWindow();
    QPointer<MainWindow> idle = app.openMainWindow();
    settle();
    window->content().session().setDestination(folder.path(QStringLiteral("a.iso")));
    window->content().session().startRip();
    ASSERT_TRUE(waitUntil([&] { return window->content().ripper().progress() == 0.42; }));
    app.quit();
    settle();
    ASSERT_FALSE(window.isNull());
    auto* question = window->findChild<CancelConfirmation*>();
    ASSERT_NE(question, nullptr);
    EXPECT_TRUE(window->content().ripper().isRunning());
    named<QAbstractButton>(question, "destructiveButton")->click();
    EXPECT_TRUE(waitUntil([&] {
        settle();
        return window.isNull();
    }));
    EXPECT_EQ(TestFolder::list(folder.temporary()), QStringList());
}

TEST_F(AppTest, QuittingGoesOnToTheNextWindowThatRips) {
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1000);
    SpindriftApp app;
    const QList<QPointer<MainWindow>> windows = {app.openMainWindow(), app.openMainWindow()};
    settle();
    for (const QPointer<MainWindow>& window : windows) {
        const QString file = QStringLiteral("%1.iso").arg(windows.indexOf(window));
        window->content().session().setDestination(folder.path(file));
        window->content().session().startRip();
        ASSERT_TRUE(waitUntil([&] { return window->content().ripper().progress() == 0.42; }));
    }
    app.quit();
    for (int answered = 0; answered < 2; ++answered) {
        CancelConfirmation* question = nullptr;
        ASSERT_TRUE(waitUntil([&] { return (question = open<CancelConfirmation>()) != nullptr; }));
        const QPointer<QWidget> asking = question->parentWidget()->window();
        named<QAbstractButton>(question, "destructiveButton")->click();
        ASSERT_TRUE(waitUntil([&] {
            settle();
            return asking.isNull();
        }));
    }
    EXPECT_EQ(open<MainWindow>(), nullptr);
}

TEST_F(AppTest, KeepGoingAlsoForgetsThatTheProgramWasToEnd) {
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1000);
    SpindriftApp app;
    QPointer<MainWindow> window = app.openMainWindow();
    settle();
    window->content().session().setDestination(folder.path(QStringLiteral("a.iso")));
    window->content().session().startRip();
    ASSERT_TRUE(waitUntil([&] { return window->content().ripper().progress() == 0.42; }));
    app.quit();
    settle();
    auto* question = window->findChild<CancelConfirmation*>();
    ASSERT_NE(question, nullptr);
    named<QAbstractButton>(question, "keepGoingButton")->click();
    settle();
    MainWindow* second = app.openMainWindow();
    const QPointer<MainWindow> third = app.openMainWindow();
    settle();
    second->close();
    settle();
    ASSERT_FALSE(window.isNull());
    EXPECT_EQ(window->findChild<CancelConfirmation*>(), nullptr) << "nothing asks again";
    EXPECT_FALSE(third.isNull());
    window->content().session().cancel();
    EXPECT_TRUE(waitUntil([&] { return !window->content().isWorking(); }));
}

TEST_F(AppTest, TheAboutPanelShowsItsCreditsCentredSmallAndSecondaryInBothSchemes) {
    SpindriftApp app;
    app.openMainWindow();
    for (const auto scheme : {SystemAppearance::Scheme::Light, SystemAppearance::Scheme::Dark}) {
        if (scheme == SystemAppearance::Scheme::Dark) {
            folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                         "[General]\nAppleInterfaceStyle=Dark\n");
        }
        AboutPanel about;
        about.show();
        settle();
        const auto* credits = named<TextLabel>(&about, "aboutCredits");
        EXPECT_FALSE(credits->text().isEmpty());
        EXPECT_EQ(credits->lines(credits->width()).size(), 1) << "one short line";
        EXPECT_TRUE(credits->alignment().testFlag(Qt::AlignHCenter));
        EXPECT_EQ(credits->role(), Appearance::Role::Secondary);
        EXPECT_EQ(credits->palette().color(QPalette::WindowText),
                  Appearance::color(Appearance::Role::Secondary, scheme));
        EXPECT_EQ(credits->font(), TextStyle::font(TextStyle::Style::Subheadline));
        EXPECT_EQ(textOf(&about, "aboutName"), QStringLiteral("Spindrift"));
        EXPECT_EQ(textOf(&about, "aboutVersion"),
                  QStringLiteral("Version ") + QApplication::applicationVersion());
        EXPECT_FALSE(named<QLabel>(&about, "aboutIcon")->pixmap().isNull());
    }
}

TEST_F(AppTest, TheAboutCommandShowsThePanel) {
    SpindriftApp app;
    const MainWindow* window = app.openMainWindow();
    settle();
    command(window, "Help", "About Spindrift")->trigger();
    settle();
    EXPECT_NE(open<AboutPanel>(), nullptr);
}
