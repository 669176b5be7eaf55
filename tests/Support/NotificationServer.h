// A notification daemon that keeps what it is told, on a thread of its own.
//
// Made and asked on the main thread, on the bus that DBUS_SESSION_BUS_ADDRESS names.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <atomic>
#include <mutex>
#include <thread>

struct sd_bus;
struct sd_bus_message;

// One call of Notify, whole.
struct ReceivedNotification {
    QString application;
    unsigned replaces = 99;
    QString icon;
    QString title;
    QString body;
    int actions = 0;
    QStringList hints;  // "name=value", sorted
    int timeout = 0;
};

class NotificationServer final {
public:
    enum class Manner { Answers, Hangs };

    NotificationServer(const QByteArray& address, const QStringList& capabilities,
                       Manner manner = Manner::Answers);
    ~NotificationServer();
    NotificationServer(const NotificationServer&) = delete;
    NotificationServer& operator=(const NotificationServer&) = delete;

    QList<ReceivedNotification> received() const;
    // Titles and bodies: "title: body".
    QStringList texts() const;
    // Calls of any kind so far, answered or not.
    int calls() const { return m_calls; }

private:
    int answer(sd_bus_message* message);
    void run();

    const QStringList m_capabilities;
    const Manner m_manner;
    std::atomic<bool> m_stop = false;
    std::atomic<int> m_calls = 0;
    mutable std::mutex m_mutex;
    QList<ReceivedNotification> m_received;
    sd_bus* m_bus = nullptr;
    std::thread m_thread;
};
