#include "Interruption.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include "CommandContext.h"

namespace {

constexpr std::array<int, 3> endingSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> hasBegun = false;
std::atomic<bool> hasHappened = false;
std::array<int, 2> signalPipe = {-1, -1};

extern "C" void noteSignal(int) {
    if (!hasBegun.load()) {
        ::_exit(ExitStatus::cancelled);
    }
    const int before = errno;
    hasHappened.store(true);
    // A full pipe already holds more news than anyone needs.
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], "s", 1);
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

}  // namespace

Interruption::Interruption(QObject* parent) : QObject(parent) {
    if (::pipe2(signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        qFatal("no pipe for the signals");
    }
    m_news = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    connect(m_news.get(), &QSocketNotifier::activated, this, &Interruption::tell);
    for (const int number : endingSignals) {
        handle(number, noteSignal);
    }
    handle(SIGPIPE, dropSignal);
}

Interruption::~Interruption() {
    for (const int number : endingSignals) {
        handle(number, SIG_DFL);
    }
    m_news.reset();
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    hasBegun.store(false);
    hasHappened.store(false);
}

void Interruption::begin() {
    hasBegun.store(true);
}

bool Interruption::happened() {
    return hasHappened.load();
}

void Interruption::goBeforeEventsOf(QObject* object) {
    object->installEventFilter(this);
}

bool Interruption::eventFilter(QObject* watched, QEvent* event) {
    if (happened()) {
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
