// Every text that the user meets can be translated: under a translator that marks whatever passes
// it, no window shows an unmarked word but what came from a disc, a drive or the user.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QRegularExpression>
#include <QTranslator>

#include "AboutPanel.h"
#include "ActionsFixture.h"
#include "CancelConfirmation.h"
#include "DiagnosticsView.h"
#include "HelpPage.h"
#include "MainWindow.h"
#include "OnboardingView.h"
#include "RipProgressView.h"
#include "SettingsWindow.h"
#include "SpindriftApp.h"
#include "VisibleTexts.h"

namespace {

const QChar mark(0x00A7);

class MarkingTranslator final : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* /*context*/, const char* text, const char* /*disambiguation*/,
                      int /*count*/) const override {
        return mark + QString::fromUtf8(text);
    }
};

// Also what only screen readers read.
QSet<QString> everyText(const QWidget* window) {
    QSet<QString> texts = visibleTexts(window);
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        texts << widget->accessibleName() << widget->accessibleDescription() << widget->toolTip();
    }
    return texts;
}

class TranslationTest : public testing::Test {
protected:
    TranslationTest() {
        QApplication::setQuitOnLastWindowClosed(false);
        QApplication::installTranslator(&translator);
        Preferences().set(Preference::HasCompletedOnboarding, true);
        Preferences().set(Preference::EjectWhenDone, false);
        DriveStubs::disc(folder, {.type = "CD-ROM", .volumeName = "Audio CD"});
        app = std::make_unique<SpindriftApp>();
    }
    ~TranslationTest() override {
        if (window != nullptr) {
            window->content().session().cancel();
            waitUntil([this] { return !window->content().isWorking(); });
        }
        delete window;
        settle();
        QApplication::removeTranslator(&translator);
    }

    void open() {
        window = app->openMainWindow();
        settle();
    }
    void rip() {
        window->content().session().setDestination(folder.path(QStringLiteral("a.iso")));
        window->content().session().startRip();
    }
    void finish() {
        rip();
        ASSERT_TRUE(waitUntil([this] {
            const ISORipper& ripper = window->content().ripper();
            return !window->content().isWorking() && (ripper.finished() || ripper.error());
        }));
        settle();
    }

    // Figures, and what comes from the disc, the drive, the tool or the user, are as they are.
    void expectMarked(const QSet<QString>& texts) const {
        static const QRegularExpression figures(QStringLiteral("^[\\d.]+( [KMGT]B/s|x)$"));
        const QSet<QString> data{"",
                                 "Audio CD",
                                 "ACME Test Drive 1.0",
                                 "Rip",
                                 "DVD.iso",
                                 "Speed Test",
                                 folder.path(QStringLiteral("a.iso"))};
        for (const QString& text : texts) {
            EXPECT_TRUE(text.contains(mark) || data.contains(text) ||
                        figures.match(text).hasMatch())
                << qPrintable(text);
        }
    }

    TestFolder folder;
    MarkingTranslator translator;
    std::unique_ptr<SpindriftApp> app;
    MainWindow* window = nullptr;
};

}  // namespace

TEST_F(TranslationTest, TheMenusAndTheMainWindow) {
    open();
    expectMarked(menuTexts(window));
    expectMarked(everyText(window));
    for (const auto& scene : {DriveStubs::noDrive, DriveStubs::emptyDrive}) {
        scene(folder);
        window->content().monitor().poll();
        settle();
        expectMarked(everyText(window));
    }
}

TEST_F(TranslationTest, ARipAndItsOutcomes) {
    open();
    DriveStubs::heldImaging(folder, "PERCENT:42\n", 1200000000);
    rip();
    ASSERT_TRUE(waitUntil([this] { return window->content().ripper().progress() == 0.42; }));
    window->content().confirmCancel();
    settle();
    expectMarked(everyText(window));
    window->content().session().cancel();
    ASSERT_TRUE(waitUntil([this] { return !window->content().isWorking(); }));

    Preferences().set(Preference::ThoroughVerify, true);
    for (const char* body : {"exit 7", "echo Permission denied >&2; exit 1", "exit 0",
                             "echo x > \"$out\"; [ $verify = no ]", "echo x > \"$out\""}) {
        DriveStubs::imaging(folder, body);
        finish();
        expectMarked(everyText(window));
    }
}

TEST_F(TranslationTest, TheSheets) {
    open();
    const DriveIdentity drive = *window->content().monitor().driveIdentity();
    window->content().diagnostics().record(
        SpeedTestResult::now(drive.driveKey(), drive.modelString(), QStringLiteral("CD"), 702000000,
                             1200000, SpeedTestResult::Source::rip));
    window->content().showDiagnostics();
    window->content().showOnboarding();
    settle();
    auto* diagnostics = window->findChild<DiagnosticsView*>();
    expectMarked(everyText(diagnostics));
    expectMarked(everyText(window->findChild<OnboardingView*>()));
    StubTools::write(folder, QStringLiteral("/usr/bin/hdiutil"), "exit 1");
    named<QAbstractButton>(diagnostics, "runSpeedTest")->click();
    ASSERT_TRUE(waitUntil([&] { return diagnostics->tester().error().has_value(); }));
    settle();
    expectMarked(everyText(diagnostics));
}

TEST_F(TranslationTest, TheOtherWindows) {
    open();
    const SettingsWindow settings;
    expectMarked(everyText(&settings));
    const AboutPanel about;
    expectMarked(everyText(&about));
    const HelpPage help(QStringLiteral("\u00a7"), QStringLiteral(":/help/disc-access.md"), nullptr);
    expectMarked(everyText(&help));
}
