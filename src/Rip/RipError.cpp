#include "RipError.h"

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
            return QStringLiteral("Could not start rip: ") + m_text;
        case Kind::imagingFailed:
            return QStringLiteral("hdiutil exited with an error: ") + m_text;
        case Kind::permissionDenied:
            break;
    }
    return QStringLiteral(
        "Permission denied reading the disc. Try again, or grant Full Disk Access to this app in "
        "System Settings.");
}
