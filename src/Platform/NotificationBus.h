// A connection to the session bus and the calls that post a notification over it.
//
// Owned by the one thread that uses it; its calls block that thread, each for a few seconds at
// most. sd-bus instead of Qt's D-Bus: a bus that accepts a connection and never answers would hold
// Qt's own bus thread, and with it every other user of D-Bus in the process and the end of the
// program.
#pragma once

#include <chrono>
#include <memory>
#include <string>

struct sd_bus;

class NotificationBus final {
public:
    NotificationBus();
    ~NotificationBus();
    NotificationBus(const NotificationBus&) = delete;
    NotificationBus& operator=(const NotificationBus&) = delete;

    // Connects to the bus at this D-Bus address unless that connection is there and alive. False
    // when there is none.
    bool connect(const std::string& address);

    // Has the bus start the daemon unless it runs; waits for no answer.
    void wakeServer();

    // Posts a new notification; UTF-8 texts without NUL. False when it was not delivered.
    bool post(const std::string& title, const std::string& body);

private:
    bool serverReadsMarkup(bool* markup);

    struct Close {
        void operator()(sd_bus* bus) const;
    };
    std::unique_ptr<sd_bus, Close> m_bus;
    std::string m_address;
};

// Text for a server that reads markup: "&", "<" and ">" as entities.
std::string escapedForMarkup(const std::string& text);
