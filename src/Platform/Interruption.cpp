#include "Interruption.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <mutex>

#include "BackgroundThread.h"
#include "Descriptor.h"
#include "ProcessTree.h"
#include "RemovedAtExit.h"

namespace {

constexpr std::array<int, 3> endingSignals = {SIGINT, SIGTERM, SIGHUP};
constexpr int patience = 2000;  // milliseconds

std::atomic<bool> hasBegun = false;
std::atomic<int> lastSignal = 0;
std::array<int, 2> signalPipe = {-1, -1};
int signalCount = -1;  // an eventfd
Interruption::Ending presentEnding = {};

extern "C" void noteSignal(int number) {
    lastSignal.store(number);
    if (!hasBegun.load()) {
        ::_exit(presentEnding.status(number));
    }
    const int before = errno;
    // A full pipe already holds more news than anyone needs.
    [[maybe_unused]] ssize_t written = ::write(signalPipe[1], "s", 1);
    const uint64_t one = 1;
    written = ::write(signalCount, &one, sizeof one);
    errno = before;
}

// Not SIG_IGN, which the disc tools would inherit.
extern "C" void dropSignal(int) {}

void handle(int number, void (*handler)(int)) {
    struct sigaction present {};
    ::sigaction(number, nullptr, &present);
    if (present.sa_handler == SIG_IGN && number != SIGPIPE) {
        return;
    }
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    ::sigaction(number, &action, nullptr);
}

// How many signals have come since the last time, once there is one or the time is over.
uint64_t signalsWithin(int descriptor, int milliseconds) {
    pollfd watched = {descriptor, POLLIN, 0};
    ::poll(&watched, 1, milliseconds);
    uint64_t count = 0;
    return ::read(descriptor, &count, sizeof count) == sizeof count ? count : 0;
}

}  // namespace

// Shared with the thread, which may be about to end the process when the owner is done.
struct Interruption::Watch {
    Descriptor count;
    std::mutex mutex;
    bool isOver = false;  // guarded by the mutex
};

// The main thread cannot be asked for this: it may wait for the drive itself.
void Interruption::watch(Watch& watch) {
    const uint64_t first = signalsWithin(watch.count.number(), -1);
    if (first == 1) {
        signalsWithin(watch.count.number(), patience);
    }
    const std::lock_guard lock(watch.mutex);
    if (watch.isOver || first == 0) {
        return;
    }
    ProcessTree::terminateChildren();
    RemovedAtExit::removeAll();
    presentEnding.lastWords();
    ::_exit(exitStatus());
}

Interruption::Interruption(Ending ending, QObject* parent)
    : QObject(parent), m_watch(std::make_shared<Watch>()) {
    presentEnding = ending;
    m_watch->count = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (::pipe2(signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0 || !m_watch->count.isOpen()) {
        qFatal("no pipe for the signals");
    }
    signalCount = m_watch->count.number();
    m_news = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    connect(m_news.get(), &QSocketNotifier::activated, this, &Interruption::tell);
    BackgroundThread::start(
        BackgroundThread::Priority::Normal, [shared = m_watch] { watch(*shared); },
        BackgroundThread::Life::Unawaited);
    for (const int number : endingSignals) {
        handle(number, noteSignal);
    }
    handle(SIGPIPE, dropSignal);
}

Interruption::~Interruption() {
    end();
    for (const int number : endingSignals) {
        handle(number, SIG_DFL);
    }
    m_news.reset();
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    // Lets the thread go.
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalCount, &one, sizeof one);
    hasBegun.store(false);
    lastSignal.store(0);
}

void Interruption::begin() {
    hasBegun.store(true);
}

void Interruption::end() {
    const std::lock_guard lock(m_watch->mutex);
    m_watch->isOver = true;
}

bool Interruption::happened() {
    return lastSignal.load() != 0;
}

int Interruption::exitStatus() {
    return presentEnding.status(lastSignal.load());
}

void Interruption::goBeforeEventsOf(QObject* object) {
    object->installEventFilter(this);
}

bool Interruption::eventFilter(QObject* watched, QEvent* event) {
    // What others have posted, not what the object sends itself while it is about to begin.
    if (event->type() == QEvent::MetaCall && happened()) {
        tell();
    }
    return QObject::eventFilter(watched, event);
}

void Interruption::tell() {
    std::array<char, 64> bytes{};
    bool isNews = false;
    while (::read(signalPipe[0], bytes.data(), bytes.size()) > 0) {
        isNews = true;
    }
    if (isNews) {
        emit interrupted();
    }
}

#include "moc_Interruption.cpp"
