#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include "ActionsFixture.h"
#include "Activation.h"
#include "CancelConfirmation.h"
#include "ContentView.h"

using ContentViewCancelTest = ActionsFixture;

TEST_F(ContentViewCancelTest, KeepGoingChangesNothing) {
    HostWindow window;
    startHeldRip(window);
    window.click("cancelButton");
    auto* question = sheet<CancelConfirmation>(window);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->windowModality(), Qt::WindowModal);
    EXPECT_EQ(question->text(),
              QStringLiteral("Cancel the rip? The partial ISO file will be deleted."));
    EXPECT_EQ(textOf(question, "destructiveButton"), QStringLiteral("Cancel Rip"));
    EXPECT_EQ(textOf(question, "keepGoingButton"), QStringLiteral("Keep Going"));
    EXPECT_EQ(question->buttons().size(), 2);
    named<QPushButton>(question, "keepGoingButton")->click();
    settle();
    EXPECT_EQ(sheet<CancelConfirmation>(window), nullptr);
    EXPECT_TRUE(window.content->ripper().isRunning());
    EXPECT_EQ(window.content->session().destination(), path);
    window.content->session().cancel();
    EXPECT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
}

TEST_F(ContentViewCancelTest, TheFocusGoesFromStartToCancelAndBack) {
    DriveStubs::disc(folder, {});
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1000);
    HostWindow window;
    window.open();
    activate(&window);
    window.choose(folder, QStringLiteral("a.iso"));
    named<QWidget>(window.content, "startButton")->setFocus();
    window.click("startButton");
    ASSERT_TRUE(waitUntil([&] { return window.content->ripper().progress() == 0.42; }));
    settle();
    EXPECT_TRUE(named<QWidget>(window.content, "cancelButton")->hasFocus());
    window.click("cancelButton");
    auto* question = sheet<CancelConfirmation>(window);
    ASSERT_NE(question, nullptr);
    EXPECT_TRUE(named<QPushButton>(question, "keepGoingButton")->isDefault())
        << "Return does no harm";
    EXPECT_FALSE(named<QPushButton>(question, "destructiveButton")->isDefault());
    question->close();
    activate(&window);
    named<QWidget>(window.content, "cancelButton")->setFocus();
    window.content->session().cancel();
    ASSERT_TRUE(waitUntil([&] { return shows(window.content, "startButton"); }));
    EXPECT_TRUE(named<QWidget>(window.content, "startButton")->hasFocus());
}

TEST_F(ContentViewCancelTest, EscapeIsKeepGoing) {
    HostWindow window;
    startHeldRip(window);
    window.click("cancelButton");
    ASSERT_NE(sheet<CancelConfirmation>(window), nullptr);
    QTest::keyClick(sheet<CancelConfirmation>(window), Qt::Key_Escape);
    settle();
    EXPECT_EQ(sheet<CancelConfirmation>(window), nullptr);
    EXPECT_TRUE(window.content->ripper().isRunning());
    window.content->session().cancel();
    EXPECT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
}

TEST_F(ContentViewCancelTest, CancelRipEndsTheRipAndRemovesItsFiles) {
    HostWindow window;
    startHeldRip(window);
    window.click("cancelButton");
    named<QPushButton>(sheet<CancelConfirmation>(window), "destructiveButton")->click();
    EXPECT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
    settle();
    EXPECT_FALSE(window.content->ripper().finished());
    EXPECT_FALSE(window.content->ripper().error());
    EXPECT_EQ(TestFolder::list(folder.temporary()), QStringList());
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(textOf(window.content, "startButton"), QStringLiteral("Start Rip"));
}

TEST_F(ContentViewCancelTest, CancelVerificationKeepsTheImageAndFallsBackToDone) {
    HostWindow window;
    startHeldVerification(window);
    EXPECT_EQ(window.status(), QStringLiteral("Verifying\u2026"));
    EXPECT_FALSE(named<QWidget>(window.content, "ejectButton")->isEnabled());
    EXPECT_TRUE(named<QWidget>(window.content, "chooseButton")->isEnabled())
        << "the next destination can be chosen";
    EXPECT_EQ(named<QProgressBar>(window.content, "ripProgressBar")->maximum(), 0);
    window.click("cancelButton");
    auto* question = sheet<CancelConfirmation>(window);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text(),
              QStringLiteral("Cancel verification? The ISO file is already complete and will be "
                             "kept \u2014 it just won't be confirmed as verified."));
    EXPECT_EQ(textOf(question, "destructiveButton"), QStringLiteral("Cancel Verification"));
    named<QPushButton>(question, "destructiveButton")->click();
    EXPECT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
    settle();
    EXPECT_EQ(window.status(), QStringLiteral("Done"));
    EXPECT_EQ(TestFolder::read(path), QByteArray("image"));
    EXPECT_EQ(textOf(window.content, "startButton"), QStringLiteral("Rip Again"));
}

TEST(CancelConfirmationTest, ItsColoursFollowTheSchemeThatItChangesTo) {
    CancelConfirmation question(CancelConfirmation::Subject::Rip, nullptr);
    for (const auto scheme : {SystemAppearance::Scheme::Dark, SystemAppearance::Scheme::Light}) {
        question.setPalette(Appearance::palette(scheme));
        EXPECT_EQ(named<QPushButton>(&question, "destructiveButton")
                      ->palette()
                      .color(QPalette::ButtonText),
                  Appearance::color(Appearance::Role::Destructive, scheme));
        const QImage icon = question.iconPixmap().toImage();
        EXPECT_EQ(icon.pixelColor(icon.width() / 4, icon.height() * 3 / 4),
                  Appearance::color(Appearance::Role::Orange, scheme));
    }
}

TEST_F(ContentViewCancelTest, TheQuestionFollowsWhatRuns) {
    Preferences().set(Preference::ThoroughVerify, true);
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder,
                        "printf image > \"$out\"\n"
                        "[ $verify = yes ] && exec sleep 1000\n"
                        "echo PERCENT:42\n"
                        "while [ ! -e '" +
                            folder.path(QStringLiteral("release")).toUtf8() +
                            "' ]; do sleep 0.02; done");
    HostWindow window;
    window.open();
    path = window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    ASSERT_TRUE(waitUntil([&] { return window.content->ripper().progress() == 0.42; }));
    window.click("cancelButton");
    auto* question = sheet<CancelConfirmation>(window);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(textOf(question, "destructiveButton"), QStringLiteral("Cancel Rip"));

    DriveStubs::release(folder);
    ASSERT_TRUE(waitUntil([&] { return window.content->ripper().trackedVerifyProcesses() == 1; }));
    settle();
    EXPECT_EQ(textOf(question, "destructiveButton"), QStringLiteral("Cancel Verification"));
    named<QPushButton>(question, "destructiveButton")->click();
    EXPECT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
    EXPECT_EQ(TestFolder::read(path), QByteArray("image")) << "the finished image is kept";
}

TEST_F(ContentViewCancelTest, TheQuestionGoesWhenThereIsNothingLeftToCancel) {
    HostWindow window;
    startHeldRip(window);
    window.click("cancelButton");
    ASSERT_NE(sheet<CancelConfirmation>(window), nullptr);
    DriveStubs::release(folder);
    EXPECT_TRUE(waitUntil([&] { return sheet<CancelConfirmation>(window) == nullptr; }));
    EXPECT_TRUE(window.isVisible());
}

TEST_F(ContentViewCancelTest, AWindowThatRipsAsksBeforeItCloses) {
    HostWindow window;
    startHeldRip(window);
    EXPECT_FALSE(window.content->mayClose());
    settle();
    ASSERT_NE(sheet<CancelConfirmation>(window), nullptr);
    named<QPushButton>(sheet<CancelConfirmation>(window), "keepGoingButton")->click();
    settle();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.content->ripper().isRunning());

    EXPECT_FALSE(window.content->mayClose());
    named<QPushButton>(sheet<CancelConfirmation>(window), "destructiveButton")->click();
    EXPECT_TRUE(waitUntil([&] { return !window.isVisible(); })) << "it closes once cancelled";
    EXPECT_EQ(TestFolder::list(folder.temporary()), QStringList());
    EXPECT_TRUE(window.content->mayClose());
}

TEST_F(ContentViewCancelTest, AWindowThatClosesAlsoCancelsWhatTheVerificationStartsAfterThat) {
    Preferences().set(Preference::ThoroughVerify, true);
    DriveStubs::disc(folder, {});
    const QByteArray ready = "'" + folder.path(QStringLiteral("ready")).toUtf8() + "'";
    DriveStubs::imaging(folder,
                        "printf image > \"$out\"\n"
                        "[ $verify = no ] && exit 0\n"
                        "trap 'exit 0' TERM; : > " +
                            ready + "\nwhile [ -e " + ready + " ]; do sleep 0.02; done");
    StubTools::write(folder, QStringLiteral("/usr/bin/shasum"), "exec sleep 1000");
    HostWindow window;
    window.open();
    path = window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    ASSERT_TRUE(waitUntil([&] {
        return QFile::exists(folder.path(QStringLiteral("ready"))) &&
               window.content->ripper().trackedVerifyProcesses() == 1;
    }));
    EXPECT_FALSE(window.content->mayClose());
    named<QPushButton>(sheet<CancelConfirmation>(window), "destructiveButton")->click();
    EXPECT_TRUE(waitUntil([&] { return !window.isVisible(); }));
    EXPECT_EQ(TestFolder::read(path), QByteArray("image"));
}

TEST_F(ContentViewCancelTest, AWindowThatWasToCloseClosesWhenTheRipEndsBeforeTheAnswer) {
    HostWindow window;
    startHeldRip(window);
    EXPECT_FALSE(window.content->mayClose());
    DriveStubs::release(folder, 0);
    EXPECT_TRUE(waitUntil([&] { return !window.isVisible(); }));
    EXPECT_EQ(QFileInfo(path).size(), 1000);
}

TEST_F(ContentViewCancelTest, AWindowThatWasToCloseStaysWhenTheRipFailsBeforeTheAnswer) {
    HostWindow window;
    startHeldRip(window);
    int kept = 0;
    QObject::connect(window.content, &ContentView::keptOpen, window.content, [&] { ++kept; });
    EXPECT_FALSE(window.content->mayClose());
    DriveStubs::release(folder);
    EXPECT_TRUE(waitUntil([&] { return !window.status().isEmpty(); }));
    EXPECT_TRUE(waitUntil([&] { return sheet<CancelConfirmation>(window) == nullptr; }));
    settle();
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(kept, 1);
}

TEST_F(ContentViewCancelTest, KeepGoingAlsoForgetsThatTheWindowWasToClose) {
    HostWindow window;
    startHeldRip(window);
    EXPECT_FALSE(window.content->mayClose());
    named<QPushButton>(sheet<CancelConfirmation>(window), "keepGoingButton")->click();
    settle();
    window.content->session().cancel();
    EXPECT_TRUE(waitUntil([&] { return shows(window.content, "startButton"); }));
    settle();
    EXPECT_TRUE(window.isVisible());
}
