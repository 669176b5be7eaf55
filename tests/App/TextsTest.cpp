// Every fixed text of the windows, character by character, where the user meets it.
#include <gtest/gtest.h>

#include <QDialog>

#include "AboutPanel.h"
#include "CancelConfirmation.h"
#include "DiagnosticsView.h"
#include "MainWindow.h"
#include "OnboardingView.h"
#include "RipProgressView.h"
#include "SettingsView.h"
#include "SpindriftApp.h"
#include "StubTools.h"
#include "VisibleTexts.h"
#include "WindowSupport.h"

namespace {

void expectAll(const QSet<QString>& shown, const QStringList& wanted, const char* where) {
    for (const QString& text : wanted) {
        EXPECT_TRUE(shown.contains(text))
            << where << " does not show: " << qPrintable(text)
            << "\nbut: " << qPrintable(QStringList(shown.values()).join(QStringLiteral(" | ")));
    }
}

void expectNone(const QSet<QString>& shown, const QStringList& unwanted, const char* where) {
    for (const QString& text : unwanted) {
        EXPECT_FALSE(shown.contains(text)) << where << " shows: " << qPrintable(text);
    }
}

class TextsTest : public testing::Test {
protected:
    TextsTest() {
        QApplication::setQuitOnLastWindowClosed(false);
        Preferences().set(Preference::HasCompletedOnboarding, true);
        Preferences().set(Preference::EjectWhenDone, false);
        DriveStubs::disc(folder, {.type = "DVD-ROM", .volumeName = "HOLIDAY"});
        DriveStubs::goodImaging(folder);
    }
    ~TextsTest() override {
        window->content().session().cancel();
        waitUntil([this] { return !window->content().isWorking(); });
        delete window;
        settle();
    }

    void open() {
        window = app.openMainWindow();
        settle();
    }
    void poll() {
        window->content().monitor().poll();
        settle();
    }
    void rip() {
        window->content().session().setDestination(folder.path(QStringLiteral("a.iso")));
        window->content().session().startRip();
        settle();
    }
    void finish() {
        rip();
        ASSERT_TRUE(waitUntil([this] {
            const ISORipper& ripper = window->content().ripper();
            return !window->content().isWorking() && (ripper.finished() || ripper.error());
        }));
        settle();
    }
    // Its interpreter is not there.
    void makeImagingToolUnstartable() {
        folder.write(QStringLiteral("tools/usr/bin/hdiutil"),
                     "#!" + folder.path(QStringLiteral("missing")).toUtf8() + "\n");
    }
    QSet<QString> content() { return visibleTexts(&window->content()); }
    QDialog* sheet(const char* className) {
        for (QDialog* dialog : window->findChildren<QDialog*>()) {
            if (dialog->inherits(className) && dialog->isVisible()) {
                return dialog;
            }
        }
        qFatal("no sheet %s", className);
    }

    TestFolder folder;
    SpindriftApp app;
    MainWindow* window = nullptr;
};

const QStringList always = {"Spindrift", "Create a raw ISO image from a CD or DVD",
                            "Drive Diagnostics", "Choose\u2026"};

}  // namespace

TEST_F(TextsTest, OfTheMenus) {
    open();
    expectAll(menuTexts(window),
              {"About Spindrift", "Retro Mode", "Full Disk Access Setup\u2026", "Settings\u2026"},
              "the menu bar");
}

TEST_F(TextsTest, OfTheMainWindowWithoutARip) {
    DriveStubs::noDrive(folder);
    open();
    expectAll(content(), always, "the window");
    expectAll(content(), {"No optical drive found.", "No destination chosen", "Start Rip"},
              "no drive");
    expectNone(content(), {"No disc inserted.", "Cancel", "Eject Disc"}, "no drive");

    DriveStubs::emptyDrive(folder);
    poll();
    expectAll(content(), {"No disc inserted.", "No destination chosen", "Start Rip"}, "no disc");
    expectNone(content(), {"No optical drive found."}, "no disc");

    DriveStubs::disc(folder, {.type = "CD-ROM", .device = "sr0", .volumeName = "Audio CD"});
    poll();
    expectAll(content(), always, "the window");
    expectAll(content(),
              {"Audio CD", "Type: CD-ROM  \u2022  Device: /dev/sr0", "Size: 4.7 GB", "Eject Disc",
               "Audio CDs have no filesystem \u2014 a raw image won't be a playable ISO. Use a "
               "dedicated CD-ripping tool for audio."},
              "an audio disc");
}

TEST_F(TextsTest, OfARip) {
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1200000000);
    open();
    rip();
    ASSERT_TRUE(waitUntil([this] { return window->content().ripper().bytesWritten() > 0; }));
    RipState state = RipState::of(window->content().ripper());
    state.speedBytesPerSecond = 8400000;
    auto* panel = window->findChild<RipProgressView*>();
    panel->show(state, false);
    expectAll(visibleTexts(panel), {"1.2 GB written \u00b7 8.4 MB/s"}, "the panel");
    expectAll(content(), {"Cancel"}, "a rip");
    expectNone(content(), {"Start Rip", "Rip Again"}, "a rip");

    window->content().confirmCancel();
    settle();
    expectAll(visibleTexts(sheet("CancelConfirmation")),
              {"Cancel the rip? The partial ISO file will be deleted.", "Cancel Rip", "Keep Going"},
              "the question");
}

TEST_F(TextsTest, OfAVerification) {
    Preferences().set(Preference::ThoroughVerify, true);
    DriveStubs::imaging(folder, "echo x > \"$out\"; [ $verify = yes ] && exec sleep 1000; exit 0");
    open();
    rip();
    ASSERT_TRUE(
        waitUntil([this] { return window->content().ripper().trackedVerifyProcesses() == 1; }));
    settle();
    expectAll(content(), {"Verifying\u2026", "2 bytes written", "Cancel"}, "a verification");
    window->content().confirmCancel();
    settle();
    expectAll(visibleTexts(sheet("CancelConfirmation")),
              {"Cancel verification? The ISO file is already complete and will be kept \u2014 it "
               "just won't be confirmed as verified.",
               "Cancel Verification", "Keep Going"},
              "the question");
    window->content().session().cancel();
    ASSERT_TRUE(waitUntil([this] { return !window->content().isWorking(); }));
    settle();
    expectAll(content(), {"Done", "Rip Again"}, "a cancelled verification");
}

TEST_F(TextsTest, OfEveryOutcome) {
    open();
    finish();
    expectAll(content(), {"Verified", "Rip Again", "No destination chosen"}, "a match");

    Preferences().set(Preference::ThoroughVerify, true);
    StubTools::write(folder, QStringLiteral("/usr/bin/shasum"), "echo \"$3\"");
    finish();
    expectAll(content(), {"Verification mismatch", "Rip Again"}, "a mismatch");

    StubTools::write(folder, QStringLiteral("/usr/bin/shasum"), "exit 1");
    finish();
    expectAll(content(), {"Could not compute checksum."}, "no digest");

    DriveStubs::imaging(folder, "echo x > \"$out\"; [ $verify = no ]");
    finish();
    expectAll(content(), {"Could not re-read the disc to verify."}, "no second read");

    DriveStubs::imaging(folder, "exit 7");
    finish();
    expectAll(content(), {"hdiutil exited with an error: exit code 7", "Start Rip"}, "a failure");

    DriveStubs::imaging(folder, "echo Permission denied >&2; exit 1");
    finish();
    expectAll(content(),
              {"Permission denied reading the disc. Try again, or grant Full Disk Access to this "
               "app in System Settings."},
              "a refusal");

    makeImagingToolUnstartable();
    finish();
    expectAll(content(), {"Could not start rip: No such file or directory"}, "a missing tool");
}

TEST_F(TextsTest, OfTheSettings) {
    open();
    const SettingsView settings;
    expectAll(visibleTexts(&settings),
              {"Ripping", "Eject disc when done", "Thorough verify (re-read entire disc)",
               "Off: trusts hdiutil's own read-error reporting \u2014 fast, no second pass. On: "
               "re-images the whole disc a second time and compares checksums \u2014 slower, but "
               "independently confirms the bytes.",
               "Appearance", "Retro Mode",
               "Reskins the app in early-2000s Mac OS X \u201cAqua\u201d \u2014 pinstripes, glossy "
               "gel buttons, and Lucida Grande."},
              "the settings");
}

TEST_F(TextsTest, OfTheGuide) {
    folder.setEnvironment("SPINDRIFT_PRACTICE_DRIVE", folder.path(QStringLiteral("none")).toUtf8());
    open();
    window->content().showOnboarding();
    settle();
    expectAll(visibleTexts(sheet("OnboardingView")),
              {"Welcome to Spindrift",
               "To rip a disc, macOS needs to let Spindrift read from your optical drive. Granting "
               "<b>Full Disk Access</b> once means you won't be asked for permission every time "
               "you start a rip.",
               "Open Full Disk Access", "We'll take you straight to the right settings pane.",
               "Turn on Spindrift",
               "Flip the switch next to Spindrift in the list. You may need to add it with the + "
               "button.",
               "Come back here", "This screen updates on its own once access is granted.",
               "Full Disk Access not enabled yet", "Skip for now", "Open Full Disk Access\u2026"},
              "the guide");
}

TEST_F(TextsTest, OfTheGuideOnceAccessIsThere) {
    open();
    OnboardingView guide({[] {}, [] { return true; }, [](QWidget*) {}}, nullptr);
    guide.show();
    const QSet<QString> shown = visibleTexts(&guide);
    expectAll(shown, {"Full Disk Access is enabled", "Skip for now", "Get Started"}, "the guide");
    expectNone(shown, {"Full Disk Access not enabled yet", "Open Full Disk Access\u2026"},
               "the guide");
}

TEST_F(TextsTest, OfTheSpeedTest) {
    open();
    window->content().showDiagnostics();
    settle();
    auto* diagnostics = static_cast<DiagnosticsView*>(sheet("DiagnosticsView"));
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1200000);
    named<QAbstractButton>(diagnostics, "runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return diagnostics->tester().bytesRead() > 0; }));
    settle();
    expectAll(visibleTexts(diagnostics), {"1.2 MB read", "Cancel"}, "a speed test");
    expectNone(visibleTexts(diagnostics), {"Run Speed Test"}, "a speed test");
    DriveStubs::release(folder);
    ASSERT_TRUE(waitUntil([&] { return !diagnostics->tester().isRunning(); }));
    settle();
    expectAll(visibleTexts(diagnostics), {"Speed test failed (exit code 3).", "Run Speed Test"},
              "a failed speed test");
    makeImagingToolUnstartable();
    named<QAbstractButton>(diagnostics, "runSpeedTest")->click();
    settle();
    expectAll(visibleTexts(diagnostics), {"Could not start speed test: No such file or directory"},
              "a missing tool");
    EXPECT_TRUE(waitUntil([&] { return !diagnostics->tester().isRunning(); }));
}

TEST_F(TextsTest, OfTheDiagnosticsWithoutADrive) {
    DriveStubs::noDrive(folder);
    open();
    window->content().showDiagnostics();
    settle();
    expectAll(visibleTexts(sheet("DiagnosticsView")),
              {"No optical drive found.", "No disc inserted."}, "the diagnostics");
}

TEST_F(TextsTest, OfTheDiagnostics) {
    open();
    window->content().showDiagnostics();
    settle();
    expectAll(visibleTexts(sheet("DiagnosticsView")),
              {"Drive Diagnostics", "Done", "ACME Test Drive 1.0", "Nickname (optional)", "Save",
               "Disc in drive: HOLIDAY (DVD)", "Run Speed Test", "History",
               "No speed tests recorded yet."},
              "the diagnostics");
    const DriveIdentity drive = *window->content().monitor().driveIdentity();
    window->content().diagnostics().record(
        SpeedTestResult::now(drive.driveKey(), drive.modelString(), QStringLiteral("DVD"),
                             4700000000, 11080000, SpeedTestResult::Source::speedTest));
    window->content().diagnostics().record(
        SpeedTestResult::now(drive.driveKey(), drive.modelString(), QStringLiteral("CD"), 702000000,
                             1200000, SpeedTestResult::Source::rip));
    settle();
    expectAll(visibleTexts(sheet("DiagnosticsView")),
              {"DVD \u2022 4.7 GB", "CD \u2022 702 MB", "11.1 MB/s", "1.2 MB/s", "8.0x",
               "Speed Test", "Rip"},
              "the history");
}
