#include "NotificationBus.h"

#include <systemd/sd-bus.h>

#include <cstring>

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* object = "/org/freedesktop/Notifications";
constexpr const char* interface = "org.freedesktop.Notifications";

constexpr std::chrono::seconds connectLimit{10};
// A daemon may first have to be started by the bus.
constexpr std::chrono::microseconds callLimit = std::chrono::seconds(20);

class Message final {
public:
    ~Message() { sd_bus_message_unref(m_message); }
    Message() = default;
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    sd_bus_message* get() const { return m_message; }
    sd_bus_message** out() { return &m_message; }

private:
    sd_bus_message* m_message = nullptr;
};

bool call(sd_bus* bus, sd_bus_message* request, Message& reply) {
    return sd_bus_call(bus, request, static_cast<uint64_t>(callLimit.count()), nullptr,
                       reply.out()) >= 0;
}

}  // namespace

void NotificationBus::Close::operator()(sd_bus* bus) const {
    sd_bus_close_unref(bus);
}

NotificationBus::NotificationBus() = default;
NotificationBus::~NotificationBus() = default;

bool NotificationBus::connect(const std::string& address) {
    // Reading what has come in since the last call also shows whether the bus has gone.
    while (m_bus && sd_bus_process(m_bus.get(), nullptr) > 0) {
    }
    if (m_bus && m_address == address && sd_bus_is_ready(m_bus.get()) > 0) {
        return true;
    }
    m_bus.reset();
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0) {
        return false;
    }
    m_bus.reset(bus);
    m_address = address;
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0) {
        m_bus.reset();
        return false;
    }
    // sd_bus_call() alone would wait for this with a limit of its own, of a minute and a half.
    const auto deadline = std::chrono::steady_clock::now() + connectLimit;
    while (sd_bus_is_ready(bus) == 0) {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
            deadline - std::chrono::steady_clock::now());
        const int processed = left.count() > 0 ? sd_bus_process(bus, nullptr) : -1;
        if (processed < 0 ||
            (processed == 0 && sd_bus_wait(bus, static_cast<uint64_t>(left.count())) < 0)) {
            break;
        }
    }
    if (sd_bus_is_ready(bus) <= 0) {
        m_bus.reset();
        return false;
    }
    return true;
}

void NotificationBus::wakeServer() {
    Message request;
    if (m_bus &&
        sd_bus_message_new_method_call(m_bus.get(), request.out(), service, object, interface,
                                       "GetCapabilities") >= 0 &&
        sd_bus_message_set_expect_reply(request.get(), 0) >= 0 &&
        sd_bus_send(m_bus.get(), request.get(), nullptr) >= 0) {
        sd_bus_flush(m_bus.get());
    }
}

bool NotificationBus::serverReadsMarkup(bool* markup) {
    Message request;
    Message reply;
    if (sd_bus_message_new_method_call(m_bus.get(), request.out(), service, object, interface,
                                       "GetCapabilities") < 0 ||
        !call(m_bus.get(), request.get(), reply) ||
        sd_bus_message_enter_container(reply.get(), 'a', "s") < 0) {
        return false;
    }
    *markup = false;
    const char* capability = nullptr;
    while (sd_bus_message_read(reply.get(), "s", &capability) > 0) {
        *markup = *markup || std::strcmp(capability, "body-markup") == 0;
    }
    return true;
}

bool NotificationBus::post(const std::string& title, const std::string& body) {
    // Asked every time: the desktop may have changed its daemon meanwhile.
    bool markup = false;
    if (!m_bus || !serverReadsMarkup(&markup)) {
        return false;
    }
    const std::string shown = markup ? escapedForMarkup(body) : body;
    Message request;
    Message reply;
    return sd_bus_message_new_method_call(m_bus.get(), request.out(), service, object, interface,
                                          "Notify") >= 0 &&
           sd_bus_message_append(request.get(), "susssasa{sv}i", "Spindrift", 0U, "spindrift",
                                 title.c_str(), shown.c_str(), 0U, 2U, "desktop-entry", "s",
                                 "spindrift", "suppress-sound", "b", 1, -1) >= 0 &&
           call(m_bus.get(), request.get(), reply);
}

std::string escapedForMarkup(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}
