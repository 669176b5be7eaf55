#include "FrameClock.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <vector>

namespace {

constexpr int frameMilliseconds = 33;

struct Shared {
    std::vector<FrameClock*> clocks;
    std::function<double()> timeSource;
    QPointer<QTimer> timer;
    bool reducedMotion = false;
};

Shared& shared() {
    static Shared state;
    return state;
}

double now() {
    if (shared().timeSource) {
        return shared().timeSource();
    }
    static const QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return static_cast<double>(timer.nsecsElapsed()) * 1e-9;
}

void tick() {
    // A frame may end clocks, so walk over what there was.
    const std::vector<QPointer<FrameClock>> clocks(shared().clocks.begin(), shared().clocks.end());
    for (const QPointer<FrameClock>& clock : clocks) {
        if (clock && clock->isRunning()) {
            emit clock->frame();
        }
    }
}

void startOrStopTimer() {
    Shared& state = shared();
    const bool needed = std::any_of(state.clocks.begin(), state.clocks.end(),
                                    [](const FrameClock* clock) { return clock->isRunning(); });
    if (needed && !state.timer) {
        state.timer = new QTimer(QCoreApplication::instance());
        state.timer->setTimerType(Qt::PreciseTimer);
        state.timer->setInterval(frameMilliseconds);
        QObject::connect(state.timer, &QTimer::timeout, state.timer, tick);
    }
    if (state.timer && needed != state.timer->isActive()) {
        needed ? state.timer->start() : state.timer->stop();
    }
}

}  // namespace

FrameClock::FrameClock(QWidget* widget) : QObject(widget), m_widget(widget), m_start(now()) {
    shared().clocks.push_back(this);
    widget->installEventFilter(this);
    watchWindow();
}

FrameClock::~FrameClock() {
    std::erase(shared().clocks, this);
    startOrStopTimer();
}

void FrameClock::setWanted(bool wanted) {
    m_wanted = wanted;
    refresh();
}

double FrameClock::seconds() const {
    return now() - m_start;
}

void FrameClock::restart() {
    m_start = now();
}

void FrameClock::setReducedMotion(bool reduced) {
    if (shared().reducedMotion == reduced) {
        return;
    }
    shared().reducedMotion = reduced;
    const std::vector<QPointer<FrameClock>> clocks(shared().clocks.begin(), shared().clocks.end());
    for (const QPointer<FrameClock>& clock : clocks) {
        if (!clock) {
            continue;
        }
        clock->refresh();
        emit clock->motionChanged();
    }
}

bool FrameClock::isMotionReduced() {
    return shared().reducedMotion;
}

void FrameClock::setTimeSource(std::function<double()> source) {
    shared().timeSource = std::move(source);
}

bool FrameClock::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::ParentChange:
        case QEvent::Show:
            watchWindow();
            refresh();
            break;
        case QEvent::Hide:
        case QEvent::EnabledChange:
        case QEvent::WindowStateChange:
        case QEvent::Expose:
            refresh();
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void FrameClock::watchWindow() {
    // The widget itself is watched already, for good.
    const auto isWidget = [this](const QObject* object) { return object == m_widget; };
    const auto watch = [this, isWidget](auto& current, auto* next) {
        if (current == next) {
            return;
        }
        if (current && !isWidget(current)) {
            current->removeEventFilter(this);
        }
        current = next;
        if (next != nullptr && !isWidget(next)) {
            next->installEventFilter(this);
        }
    };
    watch(m_window, m_widget->window());
    watch(m_surface, m_widget->window()->windowHandle());
}

void FrameClock::refresh() {
    const bool seen = m_widget->isVisible() && m_widget->isEnabled() && m_window &&
                      !m_window->isMinimized() && (!m_surface || m_surface->isExposed());
    const bool running = m_wanted && seen && !isMotionReduced();
    if (running == m_running) {
        return;
    }
    m_running = running;
    startOrStopTimer();
}

#include "moc_FrameClock.cpp"
