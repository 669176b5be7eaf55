#include "RipError.h"

#include <QCoreApplication>

QString RipError::kindName() const {
    switch (m_kind) {
        case Kind::launchFailed:
            return QStringLiteral("launchFailed");
        case Kind::imagingFailed:
            return QStringLiteral("imagingFailed");
        case Kind::permissionDenied:
            break;
    }
    return QStringLiteral("permissionDenied");
}

QString RipError::errorDescription() const {
    switch (m_kind) {
        case Kind::launchFailed:
            return QCoreApplication::translate("RipError", "Could not start rip: %1").arg(m_text);
        case Kind::imagingFailed:
            return QCoreApplication::translate("RipError", "hdiutil exited with an error: %1")
                .arg(m_text);
        case Kind::permissionDenied:
            break;
    }
    return QCoreApplication::translate(
        "RipError",
        "Permission denied reading the disc. Try again, or grant Full Disk Access to this app in "
        "System Settings.");
}
