// Draws every state of the program's windows into PNG files. Not part of the program.
//
//   screenshots FOLDER light|dark [POINTS]
//
// QT_SCALE_FACTOR sets the scale, POINTS the size of the desktop's font. The drive and the disc
// tools are stubs, so the pictures are the same on every machine.
#include <QApplication>
#include <QDir>
#include <QLocale>
#include <QMenuBar>
#include <QPushButton>
#include <cstdio>

#include "AboutPanel.h"
#include "Activation.h"
#include "AquaControls.h"
#include "CancelConfirmation.h"
#include "ContentView.h"
#include "DestinationDialog.h"
#include "DiagnosticsView.h"
#include "DriveStubs.h"
#include "GelButtonState.h"
#include "HelpPage.h"
#include "MainWindow.h"
#include "OnboardingView.h"
#include "Preferences.h"
#include "RipProgressView.h"
#include "SettingsWindow.h"
#include "SpindriftApp.h"
#include "StubTools.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

void settle() {
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

class Album {
public:
    Album(QString path, bool dark) : m_path(std::move(path)), m_dark(dark) {
        QDir().mkpath(m_path);
    }

    bool dark() const { return m_dark; }

    enum class Settle { Yes, No };

    void take(QWidget* window, const QString& name, Settle first = Settle::Yes) const {
        if (first == Settle::Yes) {
            settle();
        } else {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        }
        const QString file = m_path + QLatin1Char('/') + name +
                             (m_dark ? QStringLiteral("-dark") : QStringLiteral("-light")) +
                             QStringLiteral("-%1x.png").arg(window->devicePixelRatioF());
        if (!window->grab().save(file)) {
            qFatal("cannot write %s", qPrintable(file));
        }
        std::printf("%s\n", qPrintable(file));
    }

private:
    QString m_path;
    bool m_dark;
};

// One window in a world of its own.
class Scene {
public:
    Scene(const Album& album, bool retro) : m_album(album) {
        QByteArray preferences = "[General]\nhasCompletedOnboarding=true\nejectWhenDone=false\n";
        if (album.dark()) {
            preferences += "AppleInterfaceStyle=Dark\n";
        }
        if (retro) {
            preferences += "retroMode=true\n";
        }
        folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"), preferences);
        DriveStubs::disc(folder, {.type = "DVD-R", .volumeName = "SUMMER_2009"});
        DriveStubs::goodImaging(folder);
        DriveStubs::goodDigest(folder);
    }
    ~Scene() {
        if (window != nullptr && window->content().isWorking()) {
            window->content().session().cancel();
            waitUntil([this] { return !window->content().isWorking(); });
        }
        delete window;
        settle();
    }

    void open() {
        app = std::make_unique<SpindriftApp>();
        window = app->openMainWindow();
        settle();
    }

    void choose() {
        window->content().session().setDestination(
            QStringLiteral("/home/alex/Videos/Summer 2009.iso"));
        settle();
    }

    // A destination that can be written; afterwards one that reads well.
    void start() {
        window->content().session().setDestination(folder.path(QStringLiteral("Summer 2009.iso")));
        window->content().session().startRip();
        choose();
    }

    void finish() {
        start();
        waitUntil([this] {
            const ISORipper& ripper = window->content().ripper();
            return !window->content().isWorking() && (ripper.finished() || ripper.error());
        });
        settle();
    }

    template <typename T>
    T* sheet() const {
        T* found = window->findChild<T*>();
        if (found == nullptr) {
            qFatal("the sheet is not there");
        }
        return found;
    }

    void take(const QString& name) const { m_album.take(window, name); }

    TestFolder folder;
    std::unique_ptr<SpindriftApp> app;
    MainWindow* window = nullptr;

private:
    const Album& m_album;
};

void takeDiscStates(const Album& album) {
    Scene scene(album, false);
    DriveStubs::noDrive(scene.folder);
    scene.open();
    scene.take(QStringLiteral("no-drive"));
    DriveStubs::emptyDrive(scene.folder);
    scene.window->content().monitor().poll();
    scene.take(QStringLiteral("no-disc"));
    DriveStubs::disc(scene.folder, {.type = "CD-ROM", .volumeName = "Audio CD"});
    scene.window->content().monitor().poll();
    scene.take(QStringLiteral("audio-disc"));
    DriveStubs::disc(scene.folder, {.type = "DVD-R", .volumeName = "SUMMER_2009"});
    scene.window->content().monitor().poll();
    scene.take(QStringLiteral("disc"));
    scene.choose();
    scene.take(QStringLiteral("destination-chosen"));
    scene.window->content().session().setDestination(QStringLiteral("/home/alex/Videos/") +
                                                     QStringLiteral("Family archive/").repeated(6) +
                                                     QStringLiteral("Summer 2009.iso"));
    scene.take(QStringLiteral("destination-long"));
}

// What discs, drives and people may be called.
void takeOddNames(const Album& album) {
    const std::pair<const char*, QByteArray> names[] = {
        {"long", QByteArray("THE COMPLETE ARCHIVE OF EVERYTHING ").repeated(6)},
        {"unbroken", QByteArray(200, 'W')},
        {"markup", "&lt;b>R&amp;B&lt;/b> &amp; &amp;File %1 \\n"},
        {"rtl", "\u05d2\u05d9\u05d1\u05d5\u05d9 \u05d4\u05d7\u05d5\u05e4\u05e9\u05d4 2009"},
    };
    for (const auto& [what, name] : names) {
        Scene scene(album, false);
        DriveStubs::disc(scene.folder, {.type = "DVD-R", .volumeName = name});
        scene.open();
        const QString called = scene.window->content().monitor().disc()->displayName();
        scene.window->content().session().setDestination(QStringLiteral("/home/alex/") + called +
                                                         QStringLiteral(".iso"));
        const QString suffix = QString::fromLatin1(what);
        scene.take(QStringLiteral("names-") + suffix);
        const DriveIdentity drive = *scene.window->content().monitor().driveIdentity();
        scene.window->content().diagnostics().setNickname(called, drive);
        scene.window->content().diagnostics().record(
            SpeedTestResult::now(drive.driveKey(), drive.modelString(), QStringLiteral("DVD"),
                                 4700000000, 11080000, SpeedTestResult::Source::rip));
        scene.window->content().showDiagnostics();
        settle();
        album.take(scene.sheet<DiagnosticsView>(),
                   QStringLiteral("sheet-diagnostics-names-") + suffix);
    }
}

// Where the keyboard is must be seen on every control.
void takeFocus(const Album& album) {
    for (const bool retro : {false, true}) {
        Scene scene(album, retro);
        scene.open();
        scene.choose();
        activate(scene.window);
        // As the first press of Tab does.
        scene.window->setAttribute(Qt::WA_KeyboardFocusChange);
        for (const char* name :
             {"diagnosticsButton", "ejectButton", "chooseButton", "startButton"}) {
            scene.window->findChild<QWidget*>(QLatin1String(name))->setFocus(Qt::TabFocusReason);
            scene.take((retro ? QStringLiteral("retro-focus-") : QStringLiteral("focus-")) +
                       QLatin1String(name));
        }
    }
}

void takeRip(const Album& album, bool retro) {
    const QString prefix = retro ? QStringLiteral("retro-") : QString();
    for (const auto& [lines, name] : {std::pair<QByteArray, QString>{"PERCENT:42\n", "ripping"},
                                      {"PERCENT:-1\n", "indeterminate"}}) {
        Scene scene(album, retro);
        DriveStubs::heldImaging(scene.folder, lines, 1974000000);
        scene.open();
        scene.start();
        waitUntil([&] { return scene.window->content().ripper().bytesWritten() > 0; });
        // The stub's speed says nothing about a drive's.
        RipState state = RipState::of(scene.window->content().ripper());
        state.speedBytesPerSecond = 8400000;
        scene.window->findChild<RipProgressView*>()->show(state, retro);
        album.take(scene.window, prefix + name, Album::Settle::No);
        if (!retro && name == QStringLiteral("ripping")) {
            scene.window->content().confirmCancel();
            settle();
            album.take(scene.sheet<CancelConfirmation>(), QStringLiteral("sheet-cancel-rip"));
        }
    }
}

void takeOutcomes(const Album& album) {
    const auto outcome = [&album](const QString& name, const QByteArray& imaging, bool thorough,
                                  const QByteArray& digest) {
        Scene scene(album, false);
        DriveStubs::imaging(scene.folder, imaging);
        StubTools::write(scene.folder, QStringLiteral("/usr/bin/shasum"), digest);
        scene.open();
        Preferences().set(Preference::ThoroughVerify, thorough);
        scene.finish();
        scene.take(name);
    };
    const QByteArray good = "truncate -s 4700000000 \"$out\"";
    outcome(QStringLiteral("verified"), good, false, "exit 1");
    outcome(QStringLiteral("mismatch"), good, true, "echo \"$3\"");
    outcome(QStringLiteral("verification-failed"), good, true, "exit 1");
    outcome(QStringLiteral("error"),
            "echo 'hdiutil: create failed - Input/output error at sector 1204583: the drive could "
            "not read it after three tries, and it is not a run-out sector of the disc' >&2\n"
            "truncate -s 2467000000 \"$out\"; echo PERCENT:52; exit 1",
            false, "exit 1");

    Scene scene(album, false);
    DriveStubs::imaging(scene.folder, good + "; [ $verify = yes ] && exec sleep 1000; exit 0");
    scene.open();
    Preferences().set(Preference::ThoroughVerify, true);
    scene.start();
    waitUntil([&] { return scene.window->content().ripper().trackedVerifyProcesses() == 1; });
    scene.take(QStringLiteral("verifying"));
    scene.window->content().confirmCancel();
    settle();
    album.take(scene.sheet<CancelConfirmation>(), QStringLiteral("sheet-cancel-verification"));
    scene.window->content().session().cancel();
    waitUntil([&] { return !scene.window->content().isWorking(); });
    scene.take(QStringLiteral("done"));
}

void takeSheets(const Album& album) {
    Scene scene(album, false);
    scene.open();
    scene.window->content().showDiagnostics();
    settle();
    album.take(scene.sheet<DiagnosticsView>(), QStringLiteral("sheet-diagnostics-empty"));
    const DriveIdentity drive = *scene.window->content().monitor().driveIdentity();
    const auto record = [&](const QString& kind, qint64 size, double speed,
                            SpeedTestResult::Source source) {
        scene.window->content().diagnostics().record(
            SpeedTestResult::now(drive.driveKey(), drive.modelString(), kind, size, speed, source));
    };
    record(QStringLiteral("CD"), 702000000, 1200000, SpeedTestResult::Source::speedTest);
    record(QStringLiteral("DVD"), 4700000000, 11080000, SpeedTestResult::Source::rip);
    record(QStringLiteral("BD"), 24900000000, 27000000, SpeedTestResult::Source::speedTest);
    scene.window->content().diagnostics().setNickname(QStringLiteral("Office burner"), drive);
    album.take(scene.sheet<DiagnosticsView>(), QStringLiteral("sheet-diagnostics"));
    activate(scene.sheet<DiagnosticsView>());
    scene.sheet<DiagnosticsView>()->setAttribute(Qt::WA_KeyboardFocusChange);
    for (const char* name : {"nicknameField", "saveNickname", "runSpeedTest", "historyArea"}) {
        scene.sheet<DiagnosticsView>()->findChild<QWidget*>(QLatin1String(name))->setFocus();
        album.take(scene.sheet<DiagnosticsView>(),
                   QStringLiteral("sheet-diagnostics-focus-") + QLatin1String(name));
    }
    DriveStubs::heldImaging(scene.folder, "PERCENT:42\n", 1974000000);
    scene.sheet<DiagnosticsView>()->findChild<QPushButton*>("runSpeedTest")->click();
    waitUntil([&] { return scene.sheet<DiagnosticsView>()->tester().bytesRead() > 0; });
    album.take(scene.sheet<DiagnosticsView>(), QStringLiteral("sheet-diagnostics-running"));
    DriveStubs::release(scene.folder);
    waitUntil([&] { return !scene.sheet<DiagnosticsView>()->tester().isRunning(); });
    album.take(scene.sheet<DiagnosticsView>(), QStringLiteral("sheet-diagnostics-failed"));
    scene.sheet<DiagnosticsView>()->close();
    scene.window->content().showOnboarding();
    settle();
    album.take(scene.sheet<OnboardingView>(), QStringLiteral("sheet-guide"));
    scene.sheet<OnboardingView>()->close();
    settle();
    OnboardingView granted(
        {.onDismiss = [] {}, .isGranted = [] { return true; }, .openAccess = [](QWidget*) {}},
        scene.window);
    granted.open();
    album.take(&granted, QStringLiteral("sheet-guide-granted"));
    granted.close();
    scene.window->content().chooseDestination();
    settle();
    album.take(scene.sheet<DestinationDialog>(), QStringLiteral("sheet-destination"));
    scene.sheet<DestinationDialog>()->close();

    HelpPage help(QStringLiteral("Reading optical discs on Linux"),
                  QStringLiteral(":/help/disc-access.md"), nullptr);
    help.setAttribute(Qt::WA_DeleteOnClose, false);
    help.show();
    album.take(&help, QStringLiteral("help"));
    SettingsWindow settings;
    settings.setAttribute(Qt::WA_DeleteOnClose, false);
    settings.show();
    album.take(&settings, QStringLiteral("settings"));
    AboutPanel about;
    about.show();
    album.take(&about, QStringLiteral("about"));
}

void takeRetro(const Album& album) {
    Scene scene(album, true);
    scene.open();
    scene.take(QStringLiteral("retro-disc"));
    scene.choose();
    scene.take(QStringLiteral("retro-destination-chosen"));
    auto* choose = scene.window->findChild<QPushButton*>(QStringLiteral("chooseButton"));
    choose->setDown(true);
    choose->grab();
    const GelButtonState& shown = dynamic_cast<AquaButtonStyle&>(*choose->style()).state();
    waitUntil([&shown] { return shown.pressedAmount() == 1; });
    scene.take(QStringLiteral("retro-pressed"));
    choose->setDown(false);
    choose->grab();
    waitUntil([&shown] { return shown.pressedAmount() == 0; });
    DriveStubs::imaging(scene.folder, "truncate -s 4700000000 \"$out\"");
    scene.finish();
    scene.take(QStringLiteral("retro-verified"));
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    if (argc < 3 || argc > 4 || (qstrcmp(argv[2], "light") != 0 && qstrcmp(argv[2], "dark") != 0)) {
        std::fprintf(stderr, "usage: screenshots FOLDER light|dark [POINTS]\n");
        return 64;
    }
    if (argc == 4) {
        QFont font = QApplication::font();
        font.setPointSizeF(QByteArray(argv[3]).toDouble());
        QApplication::setFont(font);
    }
    QApplication::setQuitOnLastWindowClosed(false);
    QLocale::setDefault(QLocale(QLocale::English));
    SpindriftApp::describe();
    const Album album(QString::fromLocal8Bit(argv[1]), qstrcmp(argv[2], "dark") == 0);
    takeDiscStates(album);
    takeOddNames(album);
    takeFocus(album);
    takeRip(album, false);
    takeOutcomes(album);
    takeSheets(album);
    takeRetro(album);
    takeRip(album, true);
    return 0;
}
