// A window that is told to end while something runs: nobody is asked, and nothing is left.
#include <gtest/gtest.h>

#include <QFile>

#include "ActionsFixture.h"
#include "CancelConfirmation.h"
#include "ContentView.h"
#include "DiagnosticsView.h"
#include "RemovedAtExit.h"

class ContentViewAbandonTest : public ActionsFixture {
protected:
    QStringList temporaryImages() const { return TestFolder::list(folder.temporary()); }

    // Whether the window has closed, and what its work made is gone.
    static bool waitForTheEnd(const HostWindow& window) {
        return waitUntil([&] { return !window.isVisible(); }) && !window.content->isWorking();
    }
};

TEST_F(ContentViewAbandonTest, ARipIsCancelledAndWhatStandsAtTheDestinationStays) {
    folder.write(QStringLiteral("a.iso"), "older");
    HostWindow window;
    startHeldRip(window);
    ASSERT_EQ(temporaryImages().size(), 1);
    window.content->abandon();
    EXPECT_TRUE(waitForTheEnd(window));
    EXPECT_EQ(sheet<CancelConfirmation>(window), nullptr);
    EXPECT_EQ(temporaryImages(), QStringList());
    EXPECT_EQ(TestFolder::read(path), QByteArray("older"));
}

TEST_F(ContentViewAbandonTest, AnOpenQuestionGoesUnanswered) {
    HostWindow window;
    startHeldRip(window);
    window.click("cancelButton");
    ASSERT_NE(sheet<CancelConfirmation>(window), nullptr);
    window.content->abandon();
    EXPECT_TRUE(waitForTheEnd(window));
    EXPECT_EQ(temporaryImages(), QStringList());
}

TEST_F(ContentViewAbandonTest, AVerificationIsCancelledAndItsImageKept) {
    HostWindow window;
    startHeldVerification(window);
    window.content->abandon();
    EXPECT_TRUE(waitForTheEnd(window));
    EXPECT_TRUE(waitUntil([this] { return temporaryImages().isEmpty(); }));
    EXPECT_EQ(TestFolder::read(path), QByteArray("image"));
}

TEST_F(ContentViewAbandonTest, AnOpenSheetsTestIsCancelled) {
    DriveStubs::disc(folder, {});
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1000);
    HostWindow window;
    window.open();
    window.content->showDiagnostics();
    auto* diagnostics = sheet<DiagnosticsView>(window);
    ASSERT_NE(diagnostics, nullptr);
    named<QAbstractButton>(diagnostics, "runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return diagnostics->tester().progress() == 0.42; }));
    window.content->abandon();
    EXPECT_TRUE(waitForTheEnd(window));
    EXPECT_TRUE(waitUntil([this] { return temporaryImages().isEmpty(); }));
}

TEST_F(ContentViewAbandonTest, AProgramThatEndsBeforeATestsToolTakesItsImageAlong) {
    DriveStubs::disc(folder, {});
    DriveStubs::imaging(folder,
                        "trap '' TERM\necho PERCENT:42\n: > \"$out\"\necho PERCENT:43\n"
                        "echo $$ > '" +
                            folder.path("pid").toUtf8() + "'\nwhile [ -d '" +
                            folder.path().toUtf8() + "' ]; do sleep 0.02; done");
    HostWindow window;
    window.open();
    window.content->showDiagnostics();
    auto* diagnostics = sheet<DiagnosticsView>(window);
    ASSERT_NE(diagnostics, nullptr);
    named<QAbstractButton>(diagnostics, "runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return diagnostics->tester().progress() == 0.43; }));
    diagnostics->accept();
    window.close();
    ASSERT_EQ(temporaryImages().size(), 1) << "the tool lives";
    RemovedAtExit::removeAll();
    EXPECT_EQ(temporaryImages(), QStringList());
}
