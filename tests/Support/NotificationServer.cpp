#include "NotificationServer.h"

#include <systemd/sd-bus.h>

#include <algorithm>

namespace {

// A hint of type text or boolean; others have no place in what is sent.
QString readHint(sd_bus_message* message) {
    const char* name = "";
    sd_bus_message_read(message, "s", &name);
    const char* type = nullptr;
    sd_bus_message_peek_type(message, nullptr, &type);
    QString value = QStringLiteral("?");
    if (type && type[0] == 's') {
        const char* text = "";
        sd_bus_message_read(message, "v", "s", &text);
        value = QString::fromUtf8(text);
    } else if (type && type[0] == 'b') {
        int flag = 0;
        sd_bus_message_read(message, "v", "b", &flag);
        value = flag ? QStringLiteral("true") : QStringLiteral("false");
    } else {
        sd_bus_message_skip(message, "v");
    }
    return QString::fromUtf8(name) + u'=' + value;
}

ReceivedNotification readNotification(sd_bus_message* message) {
    ReceivedNotification received;
    const char* application = "";
    const char* icon = "";
    const char* title = "";
    const char* body = "";
    sd_bus_message_read(message, "susss", &application, &received.replaces, &icon, &title, &body);
    received.application = QString::fromUtf8(application);
    received.icon = QString::fromUtf8(icon);
    received.title = QString::fromUtf8(title);
    received.body = QString::fromUtf8(body);
    sd_bus_message_enter_container(message, 'a', "s");
    const char* action = nullptr;
    while (sd_bus_message_read(message, "s", &action) > 0) {
        ++received.actions;
    }
    sd_bus_message_exit_container(message);
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        received.hints.append(readHint(message));
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    std::sort(received.hints.begin(), received.hints.end());
    sd_bus_message_read(message, "i", &received.timeout);
    return received;
}

}  // namespace

NotificationServer::NotificationServer(const QByteArray& address, const QStringList& capabilities,
                                       Manner manner)
    : m_capabilities(capabilities), m_manner(manner) {
    const auto handler = [](sd_bus_message* message, void* server, sd_bus_error*) {
        return static_cast<NotificationServer*>(server)->answer(message);
    };
    if (sd_bus_new(&m_bus) < 0 || sd_bus_set_address(m_bus, address.constData()) < 0 ||
        sd_bus_set_bus_client(m_bus, 1) < 0 || sd_bus_start(m_bus) < 0 ||
        sd_bus_add_object(m_bus, nullptr, "/org/freedesktop/Notifications", handler, this) < 0 ||
        sd_bus_request_name(m_bus, "org.freedesktop.Notifications", 0) < 0) {
        qFatal("cannot serve notifications");
    }
    m_thread = std::thread([this] { run(); });
}

NotificationServer::~NotificationServer() {
    m_stop = true;
    m_thread.join();
    sd_bus_flush_close_unref(m_bus);
}

void NotificationServer::run() {
    while (!m_stop) {
        const int processed = sd_bus_process(m_bus, nullptr);
        if (processed < 0) {
            return;
        }
        if (processed == 0) {
            sd_bus_wait(m_bus, 5000);
        }
    }
}

int NotificationServer::answer(sd_bus_message* message) {
    ++m_calls;
    if (m_manner == Manner::Hangs) {
        return 1;
    }
    if (sd_bus_message_is_method_call(message, "org.freedesktop.Notifications", "GetCapabilities") >
        0) {
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(message, &reply);
        sd_bus_message_open_container(reply, 'a', "s");
        for (const QString& capability : m_capabilities) {
            sd_bus_message_append(reply, "s", capability.toUtf8().constData());
        }
        sd_bus_message_close_container(reply);
        sd_bus_send(nullptr, reply, nullptr);
        sd_bus_message_unref(reply);
        return 1;
    }
    if (sd_bus_message_is_method_call(message, "org.freedesktop.Notifications", "Notify") > 0) {
        const std::lock_guard lock(m_mutex);
        m_received.append(readNotification(message));
        return sd_bus_reply_method_return(message, "u", unsigned(m_received.size()));
    }
    return 0;
}

QList<ReceivedNotification> NotificationServer::received() const {
    const std::lock_guard lock(m_mutex);
    return m_received;
}

QStringList NotificationServer::texts() const {
    QStringList texts;
    for (const auto& each : received()) {
        texts.append(each.title + QStringLiteral(": ") + each.body);
    }
    return texts;
}
