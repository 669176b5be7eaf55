// A message bus of a test's own, and sockets that only look like one.
#pragma once

#include <QProcess>

#include "TestFolder.h"

// A real bus daemon. Sets DBUS_SESSION_BUS_ADDRESS in the folder's environment.
class SessionBus final {
public:
    explicit SessionBus(TestFolder& folder, const QString& name = QStringLiteral("bus"));
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    const QByteArray& address() const { return m_address; }

private:
    QProcess m_daemon;
    QByteArray m_address;
};

// Accepts connections (the kernel does) and never answers. Sets the address likewise.
class SilentBus final {
public:
    explicit SilentBus(TestFolder& folder);
    ~SilentBus();
    SilentBus(const SilentBus&) = delete;
    SilentBus& operator=(const SilentBus&) = delete;

private:
    int m_socket = -1;
};
