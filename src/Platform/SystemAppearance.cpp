#include "SystemAppearance.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

#include "BackgroundThread.h"
#include "Preferences.h"

namespace {

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr const char* portalObject = "/org/freedesktop/portal/desktop";
constexpr const char* portalInterface = "org.freedesktop.portal.Settings";

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

int settingRead(sd_bus_message* reply, void* setting, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_error(reply, nullptr) == 0) {
        static_cast<const Setting*>(setting)->take(reply);
    }
    return 0;
}

bool ask(sd_bus* bus) {
    if (sd_bus_match_signal_async(bus, nullptr, nullptr, portalObject, portalInterface,
                                  "SettingChanged", settingChanged, nullptr, nullptr) < 0) {
        return false;
    }
    // Without waiting for the answers: a portal that owes one may still tell of changes.
    return std::all_of(std::begin(settings), std::end(settings), [bus](const Setting& setting) {
        return sd_bus_call_method_async(bus, nullptr, portalService, portalObject, portalInterface,
                                        "Read", settingRead, const_cast<Setting*>(&setting), "ss",
                                        setting.space, setting.key) >= 0;
    });
}

void follow(const std::string& address) {
    sd_bus* opened = nullptr;
    if (sd_bus_new(&opened) < 0) {
        return;
    }
    const std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)> bus(opened, sd_bus_close_unref);
    if (sd_bus_set_address(bus.get(), address.c_str()) < 0 ||
        sd_bus_set_bus_client(bus.get(), 1) < 0 || sd_bus_start(bus.get()) < 0 || !ask(bus.get())) {
        return;
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
    // Read here: the environment belongs to the main thread.
    const std::string address = qgetenv("DBUS_SESSION_BUS_ADDRESS").toStdString();
    if (started.exchange(true) || address.empty()) {
        return;
    }
    // Without a thread the desktop's wish stays unknown.
    BackgroundThread::start(
        BackgroundThread::Priority::Normal, [address] { follow(address); },
        BackgroundThread::Life::Unawaited);
}
