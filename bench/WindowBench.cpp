// window-bench: what the program's main window costs, measured from inside.
//
// window-bench first-paint          ends at the main window's first paint
// window-bench idle SECONDS         prints the process's share of one core, polls included
// window-bench rip DESTINATION      rips the disc and prints the longest time, in milliseconds, for
//                                   which the main thread did not answer
#include <sys/resource.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "ContentView.h"
#include "MainWindow.h"
#include "SpindriftApp.h"

namespace {

// Ends the program once the watched window has been painted.
class EndAtFirstPaint final : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        }
        return QObject::eventFilter(watched, event);
    }
};

double cpuSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

int measureIdle(int seconds) {
    // The first second belongs to the start.
    double before = 0;
    QTimer::singleShot(2000, qApp, [&] {
        before = cpuSeconds(RUSAGE_SELF) + cpuSeconds(RUSAGE_CHILDREN);
        QTimer::singleShot(seconds * 1000, qApp, &QCoreApplication::quit);
    });
    QApplication::exec();
    const double used = cpuSeconds(RUSAGE_SELF) + cpuSeconds(RUSAGE_CHILDREN) - before;
    std::printf("%.6f\n", used / seconds);
    return 0;
}

int measureRip(MainWindow& window, const QString& destination) {
    RipSession& session = window.content().session();
    ISORipper& ripper = window.content().ripper();
    QElapsedTimer sinceTick;
    qint64 longest = 0;
    QTimer watchdog;
    watchdog.setTimerType(Qt::PreciseTimer);
    watchdog.setInterval(1);
    QObject::connect(&watchdog, &QTimer::timeout, [&] {
        if (sinceTick.isValid()) {
            longest = std::max(longest, sinceTick.elapsed());
        }
        sinceTick.start();
    });
    bool ok = false;
    QObject::connect(&ripper, &ISORipper::verifyStatusChanged, [&] {
        ok = ripper.verifyStatus().has_value();
        QTimer::singleShot(100, qApp, &QCoreApplication::quit);
    });
    QObject::connect(&ripper, &ISORipper::errorChanged, [&] {
        if (ripper.error()) {
            std::fprintf(stderr, "window-bench: %s\n",
                         qPrintable(ripper.error()->errorDescription()));
            QCoreApplication::quit();
        }
    });
    QTimer::singleShot(1000, [&] {
        watchdog.start();
        session.setDestination(destination);
        session.startRip();
    });
    QApplication::exec();
    std::printf("%lld\n", static_cast<long long>(longest));
    return ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const char* mode = argc > 1 ? argv[1] : "";
    QApplication application(argc, argv);
    SpindriftApp::describe();
    SpindriftApp app;
    MainWindow* window = app.openMainWindow();
    if (std::strcmp(mode, "first-paint") == 0) {
        EndAtFirstPaint end;
        window->installEventFilter(&end);
        return QApplication::exec();
    }
    if (std::strcmp(mode, "idle") == 0 && argc == 3) {
        return measureIdle(std::max(1, std::atoi(argv[2])));
    }
    if (std::strcmp(mode, "rip") == 0 && argc == 3) {
        return measureRip(*window, QString::fromLocal8Bit(argv[2]));
    }
    std::fputs("Usage: window-bench first-paint | idle SECONDS | rip DESTINATION\n", stderr);
    return 64;
}
