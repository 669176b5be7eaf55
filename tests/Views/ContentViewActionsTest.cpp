#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include "ActionsFixture.h"
#include "Activation.h"
#include "ContentView.h"
#include "DestinationDialog.h"
#include "InAppNotifications.h"
#include "SmallFileSystem.h"
#include "SymbolLabel.h"

using ContentViewActionsTest = ActionsFixture;

TEST_F(ContentViewActionsTest, ChoosingOpensASaveDialogWithTheDefaultName) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    window.click("chooseButton");
    auto* dialog = sheet<DestinationDialog>(window);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(dialog->nameFilters().size(), 1);
    EXPECT_TRUE(dialog->nameFilters().at(0).contains(QStringLiteral("*.iso")));
    EXPECT_EQ(dialog->defaultSuffix(), QStringLiteral("iso"));
    EXPECT_FALSE(dialog->testOption(QFileDialog::ReadOnly)) << "folders can be created";
    auto* field = dialog->findChild<QLineEdit*>();
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), QStringLiteral("HOLIDAY.iso"));

    field->setText(folder.path(QStringLiteral("chosen.iso")));
    dialog->findChild<QPushButton*>()->setFocus();
    QMetaObject::invokeMethod(dialog, "accept");
    settle();
    EXPECT_EQ(window.content->session().destination(), folder.path(QStringLiteral("chosen.iso")));
    EXPECT_EQ(sheet<DestinationDialog>(window), nullptr);
}

TEST_F(ContentViewActionsTest, CancellingTheSaveDialogLeavesTheDestination) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    const QString before = window.choose(folder, QStringLiteral("before.iso"));
    window.click("chooseButton");
    ASSERT_NE(sheet<DestinationDialog>(window), nullptr);
    sheet<DestinationDialog>(window)->reject();
    settle();
    EXPECT_EQ(window.content->session().destination(), before);
}

TEST_F(ContentViewActionsTest, TooLittleRoomIsToldBelowTheDestinationAndKeepsNobodyFromStarting) {
    const QString small = folder.path(QStringLiteral("small"));
    QDir().mkpath(small);
    const SmallFileSystem disk(small, "64k");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    EXPECT_FALSE(shows(window.content, "lackOfRoom"));
    window.content->session().setDestination(small + QStringLiteral("/disc.iso"));
    settle();
    EXPECT_TRUE(shows(window.content, "lackOfRoom"));
    const auto* warning = named<SymbolLabel>(window.content, "lackOfRoom");
    EXPECT_EQ(warning->text(),
              QStringLiteral("“%1” lacks 4.7 GB of room for the image, which takes 4.7 GB. Choose "
                             "a folder with more room.")
                  .arg(small));
    EXPECT_TRUE(named<QPushButton>(window.content, "startButton")->isEnabled());
    window.content->session().setDestination(std::nullopt);
    settle();
    EXPECT_FALSE(shows(window.content, "lackOfRoom"));
}

TEST_F(ContentViewActionsTest, APlaceThatCannotBeWrittenToIsRefusedAndAnotherAskedFor) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    const QString before = window.choose(folder, QStringLiteral("before.iso"));
    window.click("chooseButton");
    auto* dialog = sheet<DestinationDialog>(window);
    ASSERT_NE(dialog, nullptr);
    // As from a desktop's own dialog, which stops nobody.
    emit dialog->fileSelected(folder.path(QString(252, QLatin1Char('x')) + QStringLiteral(".iso")));
    dialog->reject();
    settle();
    auto* refusal = sheet<QMessageBox>(window);
    ASSERT_NE(refusal, nullptr);
    EXPECT_EQ(refusal->objectName(), QStringLiteral("destinationRefusal"));
    EXPECT_EQ(refusal->windowModality(), Qt::WindowModal);
    EXPECT_EQ(refusal->textFormat(), Qt::PlainText);
    EXPECT_EQ(refusal->text(), QStringLiteral("The name of the file is too long: 256 bytes instead "
                                              "of at most 255."));
    EXPECT_EQ(window.content->session().destination(), before);

    refusal->accept();
    settle();
    EXPECT_NE(sheet<DestinationDialog>(window), nullptr);
    EXPECT_EQ(window.content->session().destination(), before);
}

TEST_F(ContentViewActionsTest, WithoutADiscThereIsNoSaveDialog) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    window.click("chooseButton");
    EXPECT_EQ(sheet<DestinationDialog>(window), nullptr);
}

TEST_F(ContentViewActionsTest, ADvdWithoutANameAndANameWithASlashGetFileNames) {
    for (const auto& [name, expected] :
         {std::pair<QByteArray, QString>{"", "DVD.iso"}, {"A/B", "A-B.iso"}}) {
        DriveStubs::disc(folder, {.volumeName = name});
        HostWindow window;
        window.open();
        window.click("chooseButton");
        ASSERT_NE(sheet<DestinationDialog>(window), nullptr);
        EXPECT_EQ(sheet<DestinationDialog>(window)->findChild<QLineEdit*>()->text(), expected);
    }
}

TEST_F(ContentViewActionsTest, ADiscWithQuotesInItsNameIsSavedUnderOneName) {
    DriveStubs::disc(folder, {.volumeName = "The \"Best\" of 12\""});
    HostWindow window;
    window.open();
    window.click("chooseButton");
    auto* dialog = sheet<DestinationDialog>(window);
    ASSERT_NE(dialog, nullptr);
    dialog->setDirectory(folder.path(QString()));
    QMetaObject::invokeMethod(dialog, "accept");
    settle();
    EXPECT_EQ(window.content->session().destination(),
              folder.path(QStringLiteral("The 'Best' of 12'.iso")));
}

TEST_F(ContentViewActionsTest, TheExtensionIsAddedUnlessItWouldHitAnotherFile) {
    EXPECT_EQ(DestinationDialog::withExtension(folder.path(QStringLiteral("a.iso"))),
              folder.path(QStringLiteral("a.iso")));
    EXPECT_EQ(DestinationDialog::withExtension(folder.path(QStringLiteral("a.ISO"))),
              folder.path(QStringLiteral("a.ISO")));
    EXPECT_EQ(DestinationDialog::withExtension(folder.path(QStringLiteral("v1.2"))),
              folder.path(QStringLiteral("v1.2.iso")));
    folder.write(QStringLiteral("v1.3.iso"), "precious");
    EXPECT_EQ(DestinationDialog::withExtension(folder.path(QStringLiteral("v1.3"))),
              folder.path(QStringLiteral("v1.3")));
}

TEST_F(ContentViewActionsTest, TheNextSaveDialogStartsWhereTheLastOneEnded) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    const QString chosen = folder.write(QStringLiteral("images/old.iso"), "");
    QFile::remove(chosen);
    window.click("chooseButton");
    sheet<DestinationDialog>(window)->findChild<QLineEdit*>()->setText(chosen);
    QMetaObject::invokeMethod(sheet<DestinationDialog>(window), "accept");
    settle();
    ASSERT_EQ(window.content->session().destination(), chosen);
    window.click("chooseButton");
    EXPECT_EQ(sheet<DestinationDialog>(window)->directory().absolutePath(),
              folder.path(QStringLiteral("images")));
}

TEST_F(ContentViewActionsTest, AMinimisedWindowKeepsPolling) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    const auto polls = [this] {
        return StubTools::log(folder).count(QStringLiteral("drutil status"));
    };
    ASSERT_EQ(polls(), 1);
    // What the window system sends; sending them would make them events of the program's own.
    QHideEvent away;
    QSpontaneKeyEvent::setSpontaneous(&away);
    static_cast<QObject*>(window.content)->event(&away);
    EXPECT_TRUE(waitUntil([&] { return polls() == 2; }));
    QShowEvent back;
    QSpontaneKeyEvent::setSpontaneous(&back);
    static_cast<QObject*>(window.content)->event(&back);
    EXPECT_EQ(polls(), 2) << "and does not begin anew";
}

TEST_F(ContentViewActionsTest, TheGuideDoesNotOpenByItselfWithAccess) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    Preferences().set(Preference::HasCompletedOnboarding, false);
    const QString drive = folder.path(QStringLiteral("drive"));
    folder.write(QStringLiteral("drive/drive.json"), "{}");
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", drive.toUtf8());
    window.open();
    EXPECT_EQ(sheetNamed(window, "OnboardingView"), nullptr);
    EXPECT_FALSE(Preferences().value(Preference::HasCompletedOnboarding));
}

TEST_F(ContentViewActionsTest, PollingStopsWhenTheWindowGoes) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    const auto polls = [this] {
        return StubTools::log(folder).count(QStringLiteral("drutil status"));
    };
    const auto before = polls();
    EXPECT_EQ(before, 1) << "one poll at once";
    EXPECT_TRUE(waitUntil([&] { return polls() == before + 1; })) << "and one every two seconds";
    window.close();
    settle();
    const auto atClose = polls();
    QElapsedTimer waited;
    waited.start();
    EXPECT_TRUE(waitUntil([&] { return waited.elapsed() > 2500; }));
    EXPECT_EQ(polls(), atClose);
}

TEST_F(ContentViewActionsTest, AVerifiedRipEjectsTheDiscIfSoSet) {
    DriveStubs::disc(folder, {});
    DriveStubs::goodImaging(folder);
    HostWindow window;
    finishRip(window);
    EXPECT_TRUE(waitUntil([&] { return ejected(); }));
    EXPECT_FALSE(window.content->session().destination());
    EXPECT_TRUE(waitUntil([&] { return !window.content->session().isEjecting(); }));
}

TEST_F(ContentViewActionsTest, AVerifiedRipLeavesTheDiscInTheDriveIfSoSet) {
    Preferences().set(Preference::EjectWhenDone, false);
    DriveStubs::disc(folder, {});
    DriveStubs::goodImaging(folder);
    HostWindow window;
    finishRip(window);
    EXPECT_FALSE(window.content->session().isEjecting());
    EXPECT_FALSE(ejected());
    EXPECT_FALSE(window.content->session().destination());
}

TEST_F(ContentViewActionsTest, AMismatchNeitherEjectsNorForgetsTheDestination) {
    Preferences().set(Preference::ThoroughVerify, true);
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder, "echo $verify > \"$out\"");
    DriveStubs::goodDigest(folder);
    HostWindow window;
    finishRip(window);
    EXPECT_EQ(window.status(), QStringLiteral("Verification mismatch"));
    EXPECT_FALSE(window.content->session().isEjecting());
    EXPECT_FALSE(ejected());
    EXPECT_EQ(window.content->session().destination(), path);
    EXPECT_TRUE(named<QWidget>(window.content, "startButton")->isEnabled());
}

TEST_F(ContentViewActionsTest, AMatchOfTheSecondReadIsVerified) {
    Preferences().set(Preference::ThoroughVerify, true);
    DriveStubs::disc(folder, {});
    DriveStubs::goodImaging(folder);
    StubTools::write(folder, QStringLiteral("/usr/bin/shasum"), "echo same");
    HostWindow window;
    finishRip(window);
    EXPECT_EQ(window.status(), QStringLiteral("Verified"));
    EXPECT_TRUE(waitUntil([&] { return !window.content->session().isEjecting(); }));
}

TEST_F(ContentViewActionsTest, AVerificationThatCannotBeDoneShowsWhy) {
    Preferences().set(Preference::ThoroughVerify, true);
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder, "printf image > \"$out\"; [ $verify = no ]");
    HostWindow window;
    finishRip(window);
    EXPECT_EQ(window.status(), QStringLiteral("Could not re-read the disc to verify."));
}

TEST_F(ContentViewActionsTest, TheSpeedOfARipJoinsTheHistory) {
    Preferences().set(Preference::EjectWhenDone, false);
    DriveStubs::disc(folder, {});
    DriveStubs::goodImaging(folder);
    HostWindow window;
    finishRip(window);
    ASSERT_EQ(window.content->diagnostics().results().size(), 1);
    const SpeedTestResult& result = window.content->diagnostics().results().at(0);
    EXPECT_EQ(result.driveKey, QStringLiteral("ACME|Test Drive|1.0"));
    EXPECT_EQ(result.driveModelString, QStringLiteral("ACME Test Drive 1.0"));
    EXPECT_EQ(result.discKind, QStringLiteral("DVD"));
    EXPECT_EQ(result.discSizeBytes, 4700000000);
    EXPECT_EQ(result.source, SpeedTestResult::Source::rip);
}

TEST_F(ContentViewActionsTest, TheEjectButtonEjectsTheDiscThatIsShown) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    window.click("ejectButton");
    EXPECT_TRUE(waitUntil([&] { return ejected(); }));
    EXPECT_TRUE(waitUntil([&] { return !window.content->session().isEjecting(); }));
}

TEST_F(ContentViewActionsTest, TheGuideOpensAtTheFirstStartWithoutAccess) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    Preferences().set(Preference::HasCompletedOnboarding, false);
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", folder.path(QStringLiteral("none")).toUtf8());
    window.open();
    QDialog* guide = sheetNamed(window, "OnboardingView");
    ASSERT_NE(guide, nullptr);
    EXPECT_EQ(guide->windowModality(), Qt::WindowModal);
    EXPECT_FALSE(Preferences().value(Preference::HasCompletedOnboarding))
        << "not before it is closed";
    guide->close();
    settle();
    EXPECT_EQ(sheetNamed(window, "OnboardingView"), nullptr);
    EXPECT_TRUE(Preferences().value(Preference::HasCompletedOnboarding));
}

TEST_F(ContentViewActionsTest, EscapeAlsoCountsTheGuideAsCompleted) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    Preferences().set(Preference::HasCompletedOnboarding, false);
    window.content->showOnboarding();
    settle();
    ASSERT_NE(sheetNamed(window, "OnboardingView"), nullptr);
    QTest::keyClick(sheetNamed(window, "OnboardingView"), Qt::Key_Escape);
    settle();
    EXPECT_EQ(sheetNamed(window, "OnboardingView"), nullptr);
    EXPECT_TRUE(Preferences().value(Preference::HasCompletedOnboarding));
}

TEST_F(ContentViewActionsTest, TheGuideDoesNotOpenByItselfOnceCompleted) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    EXPECT_EQ(sheetNamed(window, "OnboardingView"), nullptr);
}

TEST_F(ContentViewActionsTest, TheMenuCommandOpensTheGuideEvenOnceCompleted) {
    DriveStubs::emptyDrive(folder);
    HostWindow window;
    window.open();
    emit InAppNotifications::shared().showOnboarding();
    settle();
    EXPECT_NE(sheetNamed(window, "OnboardingView"), nullptr);
    emit InAppNotifications::shared().showOnboarding();
    settle();
    EXPECT_EQ(window.findChildren<QDialog*>().size(), 1) << "and only one of it";
}

TEST_F(ContentViewActionsTest, OnlyTheFrontWindowShowsTheGuide) {
    DriveStubs::emptyDrive(folder);
    HostWindow first;
    first.open();
    HostWindow second;
    second.open();
    activate(&first);
    settle();
    emit InAppNotifications::shared().showOnboarding();
    settle();
    EXPECT_NE(sheetNamed(first, "OnboardingView"), nullptr);
    EXPECT_EQ(sheetNamed(second, "OnboardingView"), nullptr);
}

TEST_F(ContentViewActionsTest, APermissionFailureOpensTheGuideEvenOnceCompleted) {
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder, "echo 'hdiutil: create failed - Permission denied' >&2; exit 1");
    HostWindow window;
    window.open();
    window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    EXPECT_TRUE(waitUntil([&] { return sheetNamed(window, "OnboardingView") != nullptr; }));
    settle();
    EXPECT_EQ(window.status(),
              QStringLiteral("Permission denied reading the disc. Try again, or grant Full Disk "
                             "Access to this app in System Settings."));
}

TEST_F(ContentViewActionsTest, AnotherFailureOpensNoGuide) {
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder, "exit 1");
    HostWindow window;
    window.open();
    window.choose(folder, QStringLiteral("a.iso"));
    window.click("startButton");
    EXPECT_TRUE(waitUntil([&] { return !window.status().isEmpty(); }));
    settle();
    EXPECT_EQ(sheetNamed(window, "OnboardingView"), nullptr);
}

TEST_F(ContentViewActionsTest, TheDiagnosticsOpenAsASheetOfTheWindow) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    window.click("diagnosticsButton");
    QDialog* diagnostics = sheetNamed(window, "DiagnosticsView");
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(diagnostics->windowModality(), Qt::WindowModal);
    EXPECT_EQ(diagnostics->parentWidget()->window(), &window);
}

TEST_F(ContentViewActionsTest, AWindowCanGoWhileItsSheetsAreOpen) {
    DriveStubs::disc(folder, {});
    auto window = std::make_unique<HostWindow>();
    window->open();
    window->click("diagnosticsButton");
    window->content->showOnboarding();
    window->content->chooseDestination();
    settle();
    window.reset();
    settle();
}

TEST_F(ContentViewActionsTest, TwoWindowsHaveTheirOwnModels) {
    DriveStubs::disc(folder, {});
    HostWindow first;
    first.open();
    HostWindow second;
    second.open();
    first.choose(folder, QStringLiteral("a.iso"));
    EXPECT_EQ(textOf(second.content, "destinationPath"), QStringLiteral("No destination chosen"));
    EXPECT_NE(&first.content->ripper(), &second.content->ripper());
    EXPECT_NE(&first.content->monitor(), &second.content->monitor());
}
