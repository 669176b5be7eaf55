#include "ContentView.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QDialog>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include "Activation.h"
#include "Appearance.h"
#include "InAppNotifications.h"
#include "PinstripeBackground.h"
#include "SettingsView.h"
#include "StubTools.h"
#include "SymbolIcon.h"
#include "WindowSupport.h"

namespace {

using Appearance::Role;

class ContentViewTest : public testing::Test {
protected:
    // The folder comes first and goes last: the models read it when they are made.
    TestFolder folder;
};

int dialogs() {
    int count = 0;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        count += widget->isVisible() && qobject_cast<const QDialog*>(widget) != nullptr ? 1 : 0;
    }
    return count;
}

}  // namespace

TEST_F(ContentViewTest, WithoutADriveItSaysSoInTheSecondaryColour) {
    DriveStubs::noDrive(folder);
    HostWindow window;
    window.open();
    const auto* label = named<SymbolLabel>(window.content, "noDrive");
    EXPECT_TRUE(label->isVisible());
    EXPECT_EQ(label->text(), QStringLiteral("No optical drive found."));
    EXPECT_EQ(label->symbol(), QStringLiteral("exclamationmark.triangle"));
    EXPECT_EQ(label->role(), Role::Secondary);
    EXPECT_FALSE(shows(window.content, "noDisc"));
    EXPECT_FALSE(shows(window.content, "discSummary"));
}

TEST_F(ContentViewTest, WithAnEmptyDriveItSaysSoInTheSecondaryColour) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    const auto* label = named<SymbolLabel>(window.content, "noDisc");
    EXPECT_TRUE(label->isVisible());
    EXPECT_EQ(label->text(), QStringLiteral("No disc inserted."));
    EXPECT_EQ(label->symbol(), QStringLiteral("opticaldiscdrive"));
    EXPECT_EQ(label->role(), Role::Secondary);
    EXPECT_FALSE(shows(window.content, "noDrive"));
    EXPECT_FALSE(shows(window.content, "discSummary"));
}

TEST_F(ContentViewTest, ADiscIsSummedUp) {
    DriveStubs::disc(folder, {.type = "DVD+R DL", .device = "disk4"});
    HostWindow window;
    window.open();
    EXPECT_TRUE(shows(window.content, "discSummary"));
    EXPECT_FALSE(shows(window.content, "noDrive"));
    EXPECT_FALSE(shows(window.content, "noDisc"));
    EXPECT_EQ(textOf(window.content, "discName"), QStringLiteral("HOLIDAY"));
    EXPECT_EQ(textOf(window.content, "discType"),
              QStringLiteral("Type: DVD+R DL  \u2022  Device: /dev/disk4"));
    EXPECT_TRUE(shows(window.content, "discSize"));
    EXPECT_EQ(textOf(window.content, "discSize"), QStringLiteral("Size: 4.7 GB"));
    EXPECT_FALSE(shows(window.content, "audioWarning"));
    EXPECT_EQ(named<QToolButton>(window.content, "ejectButton")->toolTip(),
              QStringLiteral("Eject Disc"));
}

TEST_F(ContentViewTest, ADiscOfUnknownSizeHasNoSizeLine) {
    DriveStubs::disc(folder, {.size = ""});
    HostWindow window;
    window.open();
    EXPECT_TRUE(shows(window.content, "discSummary"));
    EXPECT_FALSE(shows(window.content, "discSize"));
}

TEST_F(ContentViewTest, ADiscWithoutANameIsCalledByItsKindAndType) {
    DriveStubs::disc(folder, {.type = "CD-ROM", .volumeName = ""});
    HostWindow window;
    window.open();
    EXPECT_EQ(textOf(window.content, "discName"), QStringLiteral("CD (CD-ROM)"));
}

TEST_F(ContentViewTest, AnAudioDiscIsWarnedAboutInAnyLetterCaseButNotRefused) {
    for (const char* name : {"Audio CD", "audio cd", "AUDIO CD"}) {
        DriveStubs::disc(folder, {.type = "CD-ROM", .volumeName = name});
        HostWindow window;
        window.open();
        const auto* warning = named<SymbolLabel>(window.content, "audioWarning");
        EXPECT_TRUE(warning->isVisible()) << name;
        EXPECT_EQ(warning->role(), Role::Orange);
        EXPECT_EQ(warning->symbol(), QStringLiteral("exclamationmark.triangle.fill"));
        const TextLabel* text = warning->textLabel();
        EXPECT_GT(text->lines(text->width()).size(), 1) << "it wraps";
        EXPECT_GE(text->height(),
                  text->lines(text->width()).size() * TextLabel::lineHeight(text->font()));
        window.choose(folder, QStringLiteral("a.iso"));
        EXPECT_TRUE(named<QPushButton>(window.content, "startButton")->isEnabled());
    }
}

TEST_F(ContentViewTest, ItIs460WideAndAsHighAsItsContent) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    EXPECT_EQ(window.content->width(), 460);
    EXPECT_EQ(window.width(), 460);
    EXPECT_EQ(window.minimumSize(), window.maximumSize()) << "the user cannot resize it";
    const int before = window.height();
    EXPECT_EQ(before, window.content->sizeHint().height());

    DriveStubs::disc(folder, {.volumeName = "Audio CD"});
    window.content->monitor().poll();
    settle();
    EXPECT_GT(window.height(), before) << "it grows with the summary";
    EXPECT_EQ(window.width(), 460);

    DriveStubs::emptyDrive(folder);
    window.content->monitor().poll();
    settle();
    EXPECT_EQ(window.height(), before) << "and shrinks again";
}

TEST_F(ContentViewTest, ItsMarginsAreTwentyAndItsPartsSixteenApart) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    const auto* column = qobject_cast<QVBoxLayout*>(window.content->layout());
    ASSERT_NE(column, nullptr);
    EXPECT_EQ(column->contentsMargins(), QMargins(20, 20, 20, 20));
    EXPECT_EQ(column->spacing(), 16);
    int bottom = -1;
    for (int i = 0; i < column->count(); ++i) {
        const QLayoutItem* part = column->itemAt(i);
        if (part->isEmpty()) {
            continue;
        }
        const QRect place = part->geometry();
        EXPECT_EQ(place.left(), 20);
        EXPECT_EQ(place.right(), 460 - 20 - 1);
        EXPECT_EQ(place.top(), bottom < 0 ? 20 : bottom + 1 + 16) << i;
        bottom = place.bottom();
    }
    EXPECT_EQ(bottom, window.content->height() - 20 - 1);
}

TEST_F(ContentViewTest, ALongDiscNameWrapsInsideTheWindow) {
    DriveStubs::disc(folder, {.volumeName = QByteArray(126, 'W')});
    HostWindow window;
    window.open();
    EXPECT_EQ(window.width(), 460);
    const TextLabel* name = named<SymbolLabel>(window.content, "discName")->textLabel();
    EXPECT_FALSE(name->isCut());
    EXPECT_GT(name->lines(name->width()).size(), 1);
    EXPECT_LE(named<QWidget>(window.content, "ejectButton")->mapTo(&window, QPoint(0, 0)).x(),
              460 - 20);
}

TEST_F(ContentViewTest, TheDestinationIsShownOnceChosen) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    auto* path = named<TextLabel>(window.content, "destinationPath");
    EXPECT_EQ(path->text(), QStringLiteral("No destination chosen"));
    EXPECT_EQ(path->role(), Role::Secondary);
    const QString chosen = window.choose(folder, QStringLiteral("a.iso"));
    EXPECT_EQ(path->text(), chosen);
    EXPECT_EQ(path->role(), Role::Primary);
    EXPECT_EQ(textOf(window.content, "chooseButton"), QStringLiteral("Choose\u2026"));
}

TEST_F(ContentViewTest, ALongDestinationIsShortenedInTheMiddle) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    window.choose(folder,
                  QStringLiteral("some folder/").repeated(20) + QStringLiteral("Summer 2009.iso"));
    const auto* path = named<TextLabel>(window.content, "destinationPath");
    const QStringList lines = path->lines(path->width());
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines.at(0).startsWith(QLatin1Char('/')));
    EXPECT_TRUE(lines.at(0).contains(QChar(0x2026)));
    EXPECT_TRUE(lines.at(0).endsWith(QStringLiteral("Summer 2009.iso"))) << qPrintable(lines.at(0));
    EXPECT_EQ(window.width(), 460);
}

TEST_F(ContentViewTest, StartNeedsADiscAndADestination) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    const auto* start = named<QPushButton>(window.content, "startButton");
    EXPECT_FALSE(start->isEnabled());
    window.choose(folder, QStringLiteral("a.iso"));
    EXPECT_FALSE(start->isEnabled()) << "no disc";
    DriveStubs::disc(folder, {});
    window.content->monitor().poll();
    settle();
    EXPECT_TRUE(start->isEnabled());
    window.content->session().setDestination(std::nullopt);
    settle();
    EXPECT_FALSE(start->isEnabled()) << "no destination";
    EXPECT_EQ(start->text(), QStringLiteral("Start Rip"));
    EXPECT_TRUE(start->isDefault());
}

TEST_F(ContentViewTest, ReturnAndEnterPressTheStartButton) {
    DriveStubs::disc(folder, {});
    DriveStubs::heldImaging(folder, "PERCENT:10\n", 10);
    HostWindow window;
    window.open();
    activate(&window);
    window.choose(folder, QStringLiteral("a.iso"));
    auto* choose = named<QPushButton>(window.content, "chooseButton");
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        choose->setFocus();
        QTest::keyClick(choose, key);
        EXPECT_TRUE(window.content->ripper().isRunning()) << key;
        window.content->session().cancel();
        EXPECT_TRUE(waitUntil([&] { return shows(window.content, "startButton"); }));
    }
}

TEST_F(ContentViewTest, ReturnDoesNothingWhileStartIsDisabled) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    activate(&window);
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_FALSE(window.content->isWorking());
    EXPECT_FALSE(StubTools::log(folder).join(QString()).contains(QStringLiteral("hdiutil")));
}

TEST_F(ContentViewTest, WhileARipRunsThePanelAndCancelAreThereAndTheRestIsHeldBack) {
    DriveStubs::disc(folder, {});
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1974000000);
    HostWindow window;
    window.open();
    window.choose(folder, QStringLiteral("a.iso"));
    EXPECT_FALSE(shows(window.content, "ripProgress"));
    window.click("startButton");
    EXPECT_TRUE(waitUntil([&] { return window.content->ripper().progress() == 0.42; }));
    settle();
    EXPECT_TRUE(shows(window.content, "ripProgress"));
    EXPECT_TRUE(shows(window.content, "cancelButton"));
    EXPECT_EQ(textOf(window.content, "cancelButton"), QStringLiteral("Cancel"));
    EXPECT_FALSE(shows(window.content, "startButton"));
    EXPECT_FALSE(named<QWidget>(window.content, "chooseButton")->isEnabled());
    EXPECT_FALSE(named<QWidget>(window.content, "ejectButton")->isEnabled());
    EXPECT_EQ(window.status(), QString());
    window.content->session().cancel();
    EXPECT_TRUE(waitUntil([&] { return shows(window.content, "startButton"); }));
    EXPECT_EQ(textOf(window.content, "startButton"), QStringLiteral("Start Rip"));
    EXPECT_FALSE(shows(window.content, "ripProgress")) << "a cancelled rip leaves nothing to show";
}

TEST_F(ContentViewTest, AnUnknownPercentageMakesTheBarBusyWhileTheBytesCountUp) {
    DriveStubs::disc(folder, {});
    DriveStubs::heldImaging(folder, "PERCENT:-1\n", 5200000);
    HostWindow window;
    window.open();
    window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    EXPECT_TRUE(waitUntil([&] {
        return textOf(window.content, "bytesWritten").startsWith(QStringLiteral("5.2 MB written"));
    }));
    EXPECT_EQ(named<QProgressBar>(window.content, "ripProgressBar")->maximum(), 0);
    window.content->session().cancel();
    EXPECT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
}

TEST_F(ContentViewTest, AfterAQuickVerificationItReadsVerifiedAtOnceAndRipAgain) {
    Preferences().set(Preference::EjectWhenDone, false);
    DriveStubs::disc(folder, {});
    DriveStubs::goodImaging(folder);
    HostWindow window;
    window.open();
    const QString path = window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    QStringList seen;
    EXPECT_TRUE(waitUntil([&] {
        if (!window.status().isEmpty()) {
            seen << window.status();
        }
        return !seen.isEmpty() && !window.content->isWorking();
    }));
    EXPECT_EQ(seen.constFirst(), QStringLiteral("Verified")) << "never Done";
    EXPECT_TRUE(shows(window.content, "ripProgress")) << "the panel stays";
    EXPECT_EQ(textOf(window.content, "startButton"), QStringLiteral("Rip Again"));
    EXPECT_EQ(textOf(window.content, "destinationPath"), QStringLiteral("No destination chosen"));
    EXPECT_FALSE(named<QWidget>(window.content, "startButton")->isEnabled());
    EXPECT_EQ(TestFolder::read(path), QByteArray("image"));
}

TEST_F(ContentViewTest, AFailedRipShowsItsErrorInTheWindow) {
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder, "echo 'hdiutil: create failed - bad disc' >&2; exit 1");
    HostWindow window;
    window.open();
    window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    EXPECT_TRUE(waitUntil([&] { return !window.status().isEmpty(); }));
    EXPECT_TRUE(window.status().startsWith(
        QStringLiteral("hdiutil exited with an error: hdiutil: create failed - bad disc")));
    EXPECT_EQ(textOf(window.content, "startButton"), QStringLiteral("Start Rip"));
    EXPECT_TRUE(named<QWidget>(window.content, "startButton")->isEnabled()) << "to try again";
    EXPECT_EQ(dialogs(), 0) << "no alert";
    EXPECT_EQ(named<SymbolLabel>(window.content, "ripStatus")->textLabel()->accessibleDescription(),
              QString())
        << "the tool left nothing";
}

TEST_F(ContentViewTest, AFailedRipTellsWhereItsImageIs) {
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder, "printf half > \"$out\"; exit 1");
    HostWindow window;
    window.open();
    window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    EXPECT_TRUE(waitUntil([&] { return !window.status().isEmpty(); }));
    const auto image = window.content->ripper().temporaryImage();
    ASSERT_TRUE(image);
    EXPECT_EQ(TestFolder::read(*image), QByteArray("half"));
    EXPECT_TRUE(named<SymbolLabel>(window.content, "ripStatus")
                    ->textLabel()
                    ->accessibleDescription()
                    .contains(*image));
}

TEST_F(ContentViewTest, RetroModeIsFollowedAtOnceAndForcesTheLightScheme) {
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                 "[General]\nAppleInterfaceStyle=Dark\n");
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    EXPECT_EQ(Appearance::schemeOf(window.palette()), SystemAppearance::Scheme::Dark);
    const QFont before = window.content->font();

    Preferences().set(Preference::RetroMode, true);
    settle();
    EXPECT_EQ(Appearance::schemeOf(window.palette()), SystemAppearance::Scheme::Light);
    EXPECT_EQ(window.palette().color(QPalette::WindowText),
              Appearance::palette(SystemAppearance::Scheme::Light).color(QPalette::WindowText));
    EXPECT_EQ(QFontInfo(window.content->font()).pixelSize(), 13);
    EXPECT_EQ(QFontInfo(named<QLabel>(window.content, "title")->font()).pixelSize(), 20);
    EXPECT_EQ(QFontInfo(named<QLabel>(window.content, "subtitle")->font()).pixelSize(), 11);
    const auto* stripes = window.findChild<PinstripeBackground*>();
    ASSERT_NE(stripes, nullptr);
    EXPECT_TRUE(stripes->isVisible());
    EXPECT_EQ(stripes->geometry(), window.rect());

    Preferences().set(Preference::RetroMode, false);
    settle();
    EXPECT_EQ(Appearance::schemeOf(window.palette()), SystemAppearance::Scheme::Dark);
    EXPECT_EQ(window.content->font(), before);
    EXPECT_FALSE(stripes->isVisible());
}

TEST_F(ContentViewTest, TheAppearanceIsReadWhenTheWindowIsRebuilt) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    EXPECT_EQ(Appearance::schemeOf(window.palette()), SystemAppearance::Scheme::Light);
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                 "[General]\nAppleInterfaceStyle=Dark\nhasCompletedOnboarding=true\n");
    window.content->monitor().poll();
    settle();
    EXPECT_EQ(Appearance::schemeOf(window.palette()), SystemAppearance::Scheme::Dark);
    folder.write(
        QStringLiteral("config/Spindrift/Spindrift.conf"),
        "[General]\nAppleInterfaceStyle=dark\nhasCompletedOnboarding=true\nretroMode=false\n");
    window.content->monitor().poll();
    settle();
    EXPECT_EQ(Appearance::schemeOf(window.palette()), SystemAppearance::Scheme::Light)
        << "only the exact value counts";
}

TEST_F(ContentViewTest, EveryButtonIsReachedByTabAndHasAName) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    activate(&window);
    window.choose(folder, QStringLiteral("a.iso"));
    QSet<QString> reached;
    for (int i = 0; i < 10; ++i) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &window,
                        Qt::Key_Tab);
        if (QApplication::focusWidget() != nullptr) {
            reached << QApplication::focusWidget()->objectName();
        }
    }
    for (const char* name : {"diagnosticsButton", "ejectButton", "chooseButton", "startButton"}) {
        EXPECT_TRUE(reached.contains(QLatin1String(name))) << name;
        QAccessibleInterface* button =
            QAccessible::queryAccessibleInterface(named<QWidget>(window.content, name));
        EXPECT_FALSE(button->text(QAccessible::Name).isEmpty()) << name;
        if (const auto* icon = qobject_cast<QToolButton*>(named<QWidget>(window.content, name))) {
            EXPECT_FALSE(icon->toolTip().isEmpty()) << name;
            EXPECT_EQ(button->text(QAccessible::Name), icon->toolTip());
            EXPECT_EQ(button->text(QAccessible::Description), icon->toolTip());
        }
    }
    EXPECT_EQ(named<QWidget>(window.content, "diagnosticsButton")->accessibleName(),
              QStringLiteral("Drive Diagnostics"));
}

TEST_F(ContentViewTest, TheKeyboardsFocusIsSeenOnEveryButton) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    activate(&window);
    window.choose(folder, QStringLiteral("a.iso"));
    for (const bool retro : {false, true}) {
        Preferences().set(Preference::RetroMode, retro);
        settle();
        for (const char* name :
             {"diagnosticsButton", "ejectButton", "chooseButton", "startButton"}) {
            auto* button = named<QWidget>(window.content, name);
            window.setAttribute(Qt::WA_KeyboardFocusChange, false);
            named<QWidget>(window.content, "chooseButton")->setFocus();
            named<QWidget>(window.content, "diagnosticsButton")->setFocus();
            if (button == QApplication::focusWidget()) {
                named<QWidget>(window.content, "chooseButton")->setFocus();
            }
            const QImage without = button->grab().toImage();
            window.setAttribute(Qt::WA_KeyboardFocusChange);
            button->setFocus(Qt::TabFocusReason);
            EXPECT_NE(button->grab().toImage(), without) << name << retro;
        }
    }
}
