#include "OnboardingView.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "Activation.h"
#include "Appearance.h"
#include "HelpPage.h"
#include "StatusPill.h"
#include "TestFolder.h"
#include "TextLabel.h"
#include "Waiting.h"

namespace {

class OnboardingViewTest : public testing::Test {
protected:
    std::unique_ptr<OnboardingView> make() {
        return std::make_unique<OnboardingView>(
            OnboardingActions{[this] { ++dismissed; }, [this] { return granted; },
                              [this](QWidget*) { ++opened; }},
            nullptr);
    }
    static QString text(const OnboardingView& view, const char* name) {
        return view.findChild<QLabel*>(QString::fromLatin1(name))->text();
    }
    static QPushButton* primary(const OnboardingView& view) {
        return view.findChild<QPushButton*>(QStringLiteral("primaryButton"));
    }
    static QString pill(const OnboardingView& view) {
        return view.findChild<StatusPill*>()->text();
    }

    bool granted = false;
    int dismissed = 0;
    int opened = 0;
};

TEST_F(OnboardingViewTest, EveryTextStandsAsFixed) {
    const auto view = make();
    EXPECT_EQ(text(*view, "onboardingTitle"), QStringLiteral("Welcome to Spindrift"));
    EXPECT_EQ(text(*view, "onboardingReason")
                  .remove(QStringLiteral("<b>"))
                  .remove(QStringLiteral("</b>")),
              QStringLiteral("To rip a disc, macOS needs to let Spindrift read from your optical "
                             "drive. Granting Full Disk Access once means you won't be asked for "
                             "permission every time you start a rip."));
    EXPECT_TRUE(
        text(*view, "onboardingReason").contains(QStringLiteral("<b>Full Disk Access</b>")));
    EXPECT_EQ(text(*view, "stepTitle1"), QStringLiteral("Open Full Disk Access"));
    EXPECT_EQ(text(*view, "stepDetail1"),
              QStringLiteral("We'll take you straight to the right settings pane."));
    EXPECT_EQ(text(*view, "stepTitle2"), QStringLiteral("Turn on Spindrift"));
    EXPECT_EQ(
        text(*view, "stepDetail2"),
        QStringLiteral("Flip the switch next to Spindrift in the list. You may need to add it "
                       "with the + button."));
    EXPECT_EQ(text(*view, "stepTitle3"), QStringLiteral("Come back here"));
    EXPECT_EQ(text(*view, "stepDetail3"),
              QStringLiteral("This screen updates on its own once access is granted."));
    EXPECT_EQ(view->findChild<QPushButton*>(QStringLiteral("skipButton"))->text(),
              QStringLiteral("Skip for now"));
}

TEST_F(OnboardingViewTest, SkipForNowIsSecondaryInWhateverSchemeTheGuideChangesTo) {
    const auto view = make();
    for (const auto scheme : {SystemAppearance::Scheme::Dark, SystemAppearance::Scheme::Light}) {
        view->setPalette(Appearance::palette(scheme));
        EXPECT_EQ(view->findChild<QPushButton*>(QStringLiteral("skipButton"))
                      ->palette()
                      .color(QPalette::ButtonText),
                  Appearance::color(Appearance::Role::Secondary, scheme));
    }
}

TEST_F(OnboardingViewTest, WithoutAccessThePillAndTheButtonSaySo) {
    const auto view = make();
    EXPECT_FALSE(view->granted());
    EXPECT_EQ(pill(*view), QStringLiteral("Full Disk Access not enabled yet"));
    EXPECT_EQ(primary(*view)->text(), QStringLiteral("Open Full Disk Access\u2026"));
    EXPECT_EQ(view->findChild<TextLabel*>(QStringLiteral("pillText"))->role(),
              Appearance::Role::Secondary);
}

TEST_F(OnboardingViewTest, WithAccessFromTheStartThePillAndTheButtonSaySo) {
    granted = true;
    const auto view = make();
    EXPECT_TRUE(view->granted());
    EXPECT_EQ(pill(*view), QStringLiteral("Full Disk Access is enabled"));
    EXPECT_EQ(view->findChild<StatusPill*>()->accessibleName(), pill(*view));
    EXPECT_EQ(primary(*view)->text(), QStringLiteral("Get Started"));
    EXPECT_EQ(view->findChild<TextLabel*>(QStringLiteral("pillText"))->role(),
              Appearance::Role::Green);
}

TEST_F(OnboardingViewTest, AccessThatComesAndGoesSwitchesPillAndButtonWithoutClosing) {
    const auto view = make();
    view->show();
    granted = true;
    EXPECT_TRUE(waitUntil([&] { return view->granted(); }));
    EXPECT_EQ(pill(*view), QStringLiteral("Full Disk Access is enabled"));
    EXPECT_EQ(primary(*view)->text(), QStringLiteral("Get Started"));
    granted = false;
    EXPECT_TRUE(waitUntil([&] { return !view->granted(); }));
    EXPECT_EQ(pill(*view), QStringLiteral("Full Disk Access not enabled yet"));
    EXPECT_TRUE(view->isVisible());
    EXPECT_EQ(dismissed, 0);
}

TEST_F(OnboardingViewTest, ThePermissionIsAskedForEveryOneAndAHalfSecondsWhileShown) {
    const auto view = make();
    auto* poll = view->findChild<QTimer*>();
    EXPECT_EQ(OnboardingView::pollMilliseconds, 1500);
    EXPECT_EQ(poll, nullptr) << "the timer is a member, not a child that others could stop";
    int asked = 0;
    OnboardingView counted(OnboardingActions{[] {}, [&] { return ++asked > 100; }, [](QWidget*) {}},
                           nullptr);
    EXPECT_EQ(asked, 1);
    counted.refresh();
    EXPECT_EQ(asked, 2);
}

TEST_F(OnboardingViewTest, ThePermissionIsLookedUpWhenTheGuideIsShownAndNotOnceItIsHidden) {
    int asked = 0;
    OnboardingView guide(OnboardingActions{[] {}, [&] { return ++asked > 1; }, [](QWidget*) {}},
                         nullptr);
    guide.show();
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(guide.granted()) << "it shows what is so now";
    EXPECT_TRUE(waitUntil([&] { return asked == 3; })) << "the poll runs";
    guide.hide();
    QElapsedTimer hidden;
    hidden.start();
    EXPECT_TRUE(waitUntil([&] { return hidden.hasExpired(2 * OnboardingView::pollMilliseconds); }));
    EXPECT_EQ(asked, 3);
}

TEST_F(OnboardingViewTest, ReturnMeansThePrimaryButtonWhereverTheFocusIs) {
    const auto view = make();
    view->show();
    auto* skip = view->findChild<QPushButton*>(QStringLiteral("skipButton"));
    activate(view.get());
    skip->setFocus();
    QTest::keyClick(skip, Qt::Key_Return);
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(dismissed, 0);
    QTest::keyClick(skip, Qt::Key_Space);
    EXPECT_EQ(dismissed, 1);
}

TEST_F(OnboardingViewTest, SkipForNowDismissesInEitherState) {
    const auto view = make();
    auto* skip = view->findChild<QPushButton*>(QStringLiteral("skipButton"));
    skip->click();
    EXPECT_EQ(dismissed, 1);
    granted = true;
    view->refresh();
    skip->click();
    EXPECT_EQ(dismissed, 2);
    EXPECT_EQ(opened, 0);
}

TEST_F(OnboardingViewTest, ReturnOpensTheSettingsWithoutAccessAndDismissesWithIt) {
    const auto view = make();
    view->show();
    EXPECT_TRUE(primary(*view)->isDefault());
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(view.get(), &press);
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(dismissed, 0);
    granted = true;
    view->refresh();
    QKeyEvent again(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(view.get(), &again);
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(dismissed, 1);
}

TEST_F(OnboardingViewTest, TheSheetIs460WideAndNoTextIsCut) {
    const auto view = make();
    view->show();
    EXPECT_TRUE(waitUntil([&] { return view->width() == 460; }));
    for (const QLabel* label : view->findChildren<QLabel*>()) {
        EXPECT_GE(label->height(), label->heightForWidth(label->width()))
            << label->text().toStdString();
    }
}

TEST_F(OnboardingViewTest, TheSystemIsAskedOnceHoweverOftenTheButtonIsPressed) {
    const TestFolder folder;
    const QString log = folder.path(QStringLiteral("asked"));
    const QString pkexec = folder.write(
        QStringLiteral("pkexec"),
        "#!/bin/sh\necho asked >> '" + log.toUtf8() + "'\nwhile [ ! -e '" +
            folder.path(QStringLiteral("answer")).toUtf8() + "' ]; do sleep 0.02; done\nexit 1\n");
    QFile::setPermissions(pkexec, QFile::ReadOwner | QFile::ExeOwner);
    const DiscAccess::Programs programs{pkexec, QStringLiteral("/the/granter")};
    const auto view = make();
    const auto helpPages = [&] { return view->findChildren<HelpPage*>().size(); };
    OnboardingView::openAccessOfSystem(view.get(), programs);
    ASSERT_TRUE(waitUntil([&] { return TestFolder::read(log).has_value(); }));
    OnboardingView::openAccessOfSystem(view.get(), programs);
    EXPECT_EQ(helpPages(), 0);
    folder.write(QStringLiteral("answer"), "");
    EXPECT_TRUE(waitUntil([&] { return helpPages() == 1; }));
    EXPECT_EQ(TestFolder::read(log), QByteArray("asked\n"));

    OnboardingView::openAccessOfSystem(view.get(), programs);
    EXPECT_TRUE(waitUntil([&] { return TestFolder::read(log) == QByteArray("asked\nasked\n"); }))
        << "it can be asked again after the answer";
    EXPECT_TRUE(waitUntil([&] { return !view->property("askingForAccess").toBool(); }));
    EXPECT_EQ(helpPages(), 1) << "the page that is open comes to the front";
}

TEST_F(OnboardingViewTest, WhereTheSystemCannotBeAskedTheHelpPageOpens) {
    const auto view = make();
    OnboardingView::openAccessOfSystem(view.get(), std::nullopt);
    EXPECT_EQ(view->findChildren<HelpPage*>().size(), 1);
}

TEST_F(OnboardingViewTest, ItIsASheetOfItsWindow) {
    const auto view = make();
    EXPECT_EQ(view->windowModality(), Qt::WindowModal);
}

}  // namespace
