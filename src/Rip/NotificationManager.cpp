#include "NotificationManager.h"

#include <QByteArray>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

#include "BackgroundThread.h"
#include "NotificationBus.h"

namespace {

// Texts as UTF-8, and the bus as it was known when the notification was posted.
struct Notice {
    std::string address;
    std::optional<std::pair<std::string, std::string>> texts;  // absent: only wake the daemon
};

// More than a user could read; bounds what a bus that hangs can pile up.
constexpr size_t longestQueue = 100;

// The queue between the callers and the thread that delivers. Never destroyed: that thread may
// still be waiting for a bus when the program ends.
class Courier final {
public:
    static Courier& instance() {
        static auto* const courier = new Courier;
        return *courier;
    }

    void send(Notice notice) {
        const std::lock_guard lock(m_mutex);
        if (!m_threadRuns) {
            m_threadRuns = BackgroundThread::start(
                               BackgroundThread::Priority::Normal, [this] { deliver(); },
                               BackgroundThread::Life::Unawaited) == 0;
        }
        if (m_threadRuns && m_queue.size() < longestQueue) {
            m_queue.push_back(std::move(notice));
            m_changed.notify_all();
        }
    }

    void flush(std::chrono::milliseconds limit) {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, limit, [this] { return m_queue.empty(); });
    }

private:
    void deliver() {
        NotificationBus bus;
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return !m_queue.empty(); });
            // It leaves the queue only when it is done, for flush().
            const Notice notice = m_queue.front();
            lock.unlock();
            const bool connected = bus.connect(notice.address);
            if (connected && notice.texts) {
                bus.post(notice.texts->first, notice.texts->second);
            } else if (connected) {
                bus.wakeServer();
            }
            lock.lock();
            m_queue.pop_front();
            m_changed.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Notice> m_queue;
    bool m_threadRuns = false;
};

// Never the address that makes a library start a bus of its own.
std::optional<std::string> sessionBusAddress() {
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty()) {
        return address.toStdString();
    }
    const QByteArray runtimeFolder = qgetenv("XDG_RUNTIME_DIR");
    if (runtimeFolder.isEmpty()) {
        return std::nullopt;
    }
    return "unix:path=" + runtimeFolder.toPercentEncoding("/").toStdString() + "/bus";
}

// D-Bus carries UTF-8 without NUL only.
std::string plainUtf8(QString text) {
    return text.remove(QChar(u'\0')).toUtf8().toStdString();
}

}  // namespace

void NotificationManager::requestAuthorization() {
    if (const auto address = sessionBusAddress()) {
        Courier::instance().send({*address, std::nullopt});
    }
}

void NotificationManager::notify(const QString& title, const QString& body) {
    if (const auto address = sessionBusAddress()) {
        Courier::instance().send({*address, std::pair(plainUtf8(title), plainUtf8(body))});
    }
}

void NotificationManager::flush(int milliseconds) {
    Courier::instance().flush(std::chrono::milliseconds(milliseconds));
}
