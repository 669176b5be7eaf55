// A window with the gel bar and the pulsing gel button: what their animation costs.
//
// Usage: glossy-window [SECONDS]
// Prints one line "animated PERCENT" and one "minimised PERCENT": this process's user and system
// time over so many seconds of wall-clock time (default 10), in per cent of one core.
#include <sys/resource.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <cstdio>
#include <cstdlib>

#include "AquaControls.h"
#include "AquaProgressBar.h"
#include "PinstripeBackground.h"

namespace {

constexpr int settleMilliseconds = 1000;

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Lets the window be for a moment, then measures it for `seconds` and calls `next`.
template <typename Next>
void measure(const char* name, int seconds, Next next) {
    QTimer::singleShot(settleMilliseconds, qApp, [=] {
        const double before = processorSeconds();
        QElapsedTimer wall;
        wall.start();
        QTimer::singleShot(seconds * 1000, qApp, [=] {
            const double used = processorSeconds() - before;
            const double elapsed = static_cast<double>(wall.nsecsElapsed()) * 1e-9;
            std::printf("%s %.2f\n", name, 100 * used / elapsed);
            next();
        });
    });
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;

    QWidget window;
    window.setFixedSize(460, 320);
    PinstripeBackground background(&window);
    QVBoxLayout column(&window);
    column.setContentsMargins(20, 20, 20, 20);
    AquaProgressBar bar;
    column.addWidget(&bar);
    column.addStretch();
    QHBoxLayout row;
    column.addLayout(&row);
    row.addStretch();
    QPushButton button(QStringLiteral("Start Rip"));
    row.addWidget(&button);
    aquaButton(&button, true, Tint::blue);
    aquaPulse(&button, true);
    window.show();

    measure("animated", seconds, [&] {
        window.showMinimized();
        measure("minimised", seconds, [] { QApplication::quit(); });
    });
    return QApplication::exec();
}
