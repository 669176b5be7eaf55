#include "SessionBus.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QFile>
#include <cstring>

SessionBus::SessionBus(TestFolder& folder, const QString& name) {
    const QString socket = folder.path(name);
    const QString config = folder.write(
        name + QStringLiteral(".conf"),
        "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
        "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
        "<busconfig><type>session</type><listen>unix:path=" +
            socket.toUtf8().toPercentEncoding("/") +
            "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
            "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
            "<allow own=\"*\"/></policy></busconfig>\n");
    m_daemon.start(
        QStringLiteral("/usr/bin/dbus-daemon"),
        {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"), QStringLiteral("--nosyslog"),
         QStringLiteral("--print-address=1"), QStringLiteral("--config-file=") + config});
    while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(60000)) {
    }
    m_address = m_daemon.readLine().trimmed();
    if (m_address.isEmpty()) {
        qFatal("no bus: %s", m_daemon.readAllStandardError().constData());
    }
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", m_address);
}

SessionBus::~SessionBus() {
    m_daemon.kill();
    m_daemon.waitForFinished(60000);
}

SilentBus::SilentBus(TestFolder& folder) {
    const QByteArray path = QFile::encodeName(folder.path(QStringLiteral("silent")));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.constData(), sizeof(address.sun_path) - 1);
    m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(m_socket, 100) != 0) {
        qFatal("cannot listen on %s", path.constData());
    }
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path);
}

SilentBus::~SilentBus() {
    close(m_socket);
}
