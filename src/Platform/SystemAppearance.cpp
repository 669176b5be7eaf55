#include "SystemAppearance.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <system_error>
#include <thread>

#include "Preferences.h"

namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* object = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";
constexpr uint64_t callLimit = 10'000'000;  // microseconds

std::atomic<bool> prefersDark = false;
std::atomic<bool> prefersStill = false;

struct Setting {
    const char* space;
    const char* key;
    // Reads the setting's value, at which the message stands.
    void (*take)(sd_bus_message* message);
};

// Values come wrapped in one variant, or in two from older portals.
bool enter(sd_bus_message* message, const char* wanted) {
    const char* contents = nullptr;
    char type = 0;
    for (int depth = 0; depth < 3; ++depth) {
        if (sd_bus_message_peek_type(message, &type, &contents) <= 0) {
            return false;
        }
        if (type == wanted[0]) {
            return true;
        }
        if (type != 'v' || sd_bus_message_enter_container(message, 'v', contents) < 0) {
            return false;
        }
    }
    return false;
}

void takeColorScheme(sd_bus_message* message) {
    uint32_t scheme = 0;
    if (enter(message, "u") && sd_bus_message_read(message, "u", &scheme) > 0) {
        prefersDark = scheme == 1;
    }
}

void takeAnimations(sd_bus_message* message) {
    int enabled = 1;
    if (enter(message, "b") && sd_bus_message_read(message, "b", &enabled) > 0) {
        prefersStill = enabled == 0;
    }
}

constexpr Setting settings[] = {
    {"org.freedesktop.appearance", "color-scheme", takeColorScheme},
    {"org.gnome.desktop.interface", "enable-animations", takeAnimations},
};

int settingChanged(sd_bus_message* message, void* /*data*/, sd_bus_error* /*error*/) {
    const char* space = nullptr;
    const char* key = nullptr;
    if (sd_bus_message_read(message, "ss", &space, &key) > 0) {
        for (const Setting& setting : settings) {
            if (std::strcmp(setting.space, space) == 0 && std::strcmp(setting.key, key) == 0) {
                setting.take(message);
            }
        }
    }
    return 0;
}

void follow() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) {
        return;
    }
    const std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)> bus(opened, sd_bus_flush_close_unref);
    sd_bus_match_signal_async(bus.get(), nullptr, nullptr, object, interface, "SettingChanged",
                              settingChanged, nullptr, nullptr);
    for (const Setting& setting : settings) {
        sd_bus_message* request = nullptr;
        sd_bus_message* reply = nullptr;
        if (sd_bus_message_new_method_call(bus.get(), &request, service, object, interface,
                                           "Read") >= 0 &&
            sd_bus_message_append(request, "ss", setting.space, setting.key) >= 0 &&
            sd_bus_call(bus.get(), request, callLimit, nullptr, &reply) >= 0) {
            setting.take(reply);
        }
        sd_bus_message_unref(request);
        sd_bus_message_unref(reply);
    }
    while (true) {
        const int processed = sd_bus_process(bus.get(), nullptr);
        if (processed < 0 || (processed == 0 && sd_bus_wait(bus.get(), UINT64_MAX) < 0)) {
            return;
        }
    }
}

}  // namespace

SystemAppearance::Scheme SystemAppearance::current() {
    if (const auto style = Preferences().appleInterfaceStyle()) {
        return *style == QLatin1String("Dark") ? Scheme::Dark : Scheme::Light;
    }
    return prefersDark ? Scheme::Dark : Scheme::Light;
}

bool SystemAppearance::reducedMotion() {
    return prefersStill;
}

void SystemAppearance::prepare() {
    static std::atomic<bool> started = false;
    if (started.exchange(true) || qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) {
        return;
    }
    try {
        std::thread(follow).detach();
    } catch (const std::system_error&) {
        // Without a thread the desktop's wish stays unknown.
    }
}
