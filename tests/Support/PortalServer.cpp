#include "PortalServer.h"

#include <systemd/sd-bus.h>

#include <QtGlobal>
#include <cstring>
#include <utility>

namespace {

constexpr const char* object = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* desktop = "org.gnome.desktop.interface";

}  // namespace

PortalServer::PortalServer(const QByteArray& address, Manner manner, Settings settings)
    : m_manner(manner), m_settings(settings) {
    const auto handler = [](sd_bus_message* message, void* server, sd_bus_error*) {
        return static_cast<PortalServer*>(server)->answer(message);
    };
    if (sd_bus_new(&m_bus) < 0 || sd_bus_set_address(m_bus, address.constData()) < 0 ||
        sd_bus_set_bus_client(m_bus, 1) < 0 || sd_bus_start(m_bus) < 0 ||
        sd_bus_add_object(m_bus, nullptr, object, handler, this) < 0 ||
        sd_bus_request_name(m_bus, "org.freedesktop.portal.Desktop", 0) < 0) {
        qFatal("cannot be a portal");
    }
    m_thread = std::thread([this] { run(); });
}

PortalServer::~PortalServer() {
    m_stop = true;
    m_thread.join();
    sd_bus_flush_close_unref(m_bus);
}

void PortalServer::run() {
    while (!m_stop) {
        std::vector<std::function<void()>> work;
        {
            const std::lock_guard lock(m_mutex);
            work = std::exchange(m_work, {});
        }
        for (const auto& each : work) {
            each();
        }
        const int processed = sd_bus_process(m_bus, nullptr);
        if (processed < 0) {
            return;
        }
        if (processed == 0) {
            sd_bus_wait(m_bus, 5000);
        }
    }
}

void PortalServer::later(std::function<void()> work) {
    const std::lock_guard lock(m_mutex);
    m_work.push_back(std::move(work));
}

int PortalServer::answer(sd_bus_message* message) {
    const char* space = "";
    const char* key = "";
    if (sd_bus_message_is_method_call(message, interface, "Read") <= 0 ||
        sd_bus_message_read(message, "ss", &space, &key) <= 0) {
        return 0;
    }
    ++m_readings;
    const bool isScheme =
        std::strcmp(space, appearance) == 0 && std::strcmp(key, "color-scheme") == 0;
    if (!isScheme &&
        (std::strcmp(space, desktop) != 0 || std::strcmp(key, "enable-animations") != 0)) {
        qFatal("asked for %s %s", space, key);
    }
    const int animations = m_settings.animations ? 1 : 0;
    switch (m_manner) {
        case Manner::Answers:
            return isScheme
                       ? sd_bus_reply_method_return(message, "v", "v", "u", m_settings.colorScheme)
                       : sd_bus_reply_method_return(message, "v", "v", "b", animations);
        case Manner::AnswersPlainly:
            return isScheme ? sd_bus_reply_method_return(message, "v", "u", m_settings.colorScheme)
                            : sd_bus_reply_method_return(message, "v", "b", animations);
        case Manner::AnswersOddly:
            return isScheme ? sd_bus_reply_method_return(message, "v", "s", "1")
                            : sd_bus_reply_method_return(message, "");
        case Manner::Refuses:
            return sd_bus_reply_method_errorf(message, "org.freedesktop.portal.Error.NotFound",
                                              "no such setting");
        case Manner::Hangs:
            break;
    }
    return 1;
}

void PortalServer::changeColorScheme(unsigned scheme) {
    later([this, scheme] {
        sd_bus_emit_signal(m_bus, object, interface, "SettingChanged", "ssv", appearance,
                           "color-scheme", "u", scheme);
    });
}

void PortalServer::changeAnimations(bool animations) {
    later([this, animations] {
        sd_bus_emit_signal(m_bus, object, interface, "SettingChanged", "ssv", desktop,
                           "enable-animations", "b", animations ? 1 : 0);
    });
}

void PortalServer::changeOddly() {
    later([this] {
        sd_bus_emit_signal(m_bus, object, interface, "SettingChanged", "ssv", appearance,
                           "color-scheme", "s", "1");
        sd_bus_emit_signal(m_bus, object, interface, "SettingChanged", "ssv", appearance,
                           "contrast", "u", 1U);
        sd_bus_emit_signal(m_bus, object, interface, "SettingChanged", "ssv", desktop,
                           "color-scheme", "u", 1U);
        sd_bus_emit_signal(m_bus, object, interface, "SettingChanged", "s", appearance);
        sd_bus_emit_signal(m_bus, object, interface, "SettingChanged", "");
    });
}
