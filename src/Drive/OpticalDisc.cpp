#include "OpticalDisc.h"

#include <QCoreApplication>
#include <array>

namespace {
constexpr std::array kinds{DiscKind::cd, DiscKind::dvd, DiscKind::bd, DiscKind::unknown};
}

QString rawValue(DiscKind kind) {
    switch (kind) {
        case DiscKind::cd:
            return QStringLiteral("CD");
        case DiscKind::dvd:
            return QStringLiteral("DVD");
        case DiscKind::bd:
            return QStringLiteral("BD");
        case DiscKind::unknown:
            break;
    }
    return QStringLiteral("Disc");
}

std::optional<DiscKind> discKindFromRawValue(const QString& text) {
    for (const DiscKind kind : kinds) {
        if (text == rawValue(kind)) {
            return kind;
        }
    }
    return std::nullopt;
}

DiscKind discKindFromRawType(const QString& rawType) {
    const QString upper = rawType.toUpper();
    // The order decides mixed texts.
    for (const DiscKind kind : {DiscKind::bd, DiscKind::dvd, DiscKind::cd}) {
        if (upper.contains(rawValue(kind))) {
            return kind;
        }
    }
    return DiscKind::unknown;
}

QString OpticalDisc::displayName() const {
    if (volumeName && !volumeName->isEmpty()) {
        return *volumeName;
    }
    return rawValue(kind) + QStringLiteral(" (") + rawType + QLatin1Char(')');
}

bool OpticalDisc::isAudioVolume(const std::optional<QString>& volumeName) {
    return volumeName && volumeName->compare(QLatin1String("Audio CD"), Qt::CaseInsensitive) == 0;
}

QString OpticalDisc::audioWarning() {
    return QCoreApplication::translate(
        "OpticalDisc",
        "Audio CDs have no filesystem \u2014 a raw image won't be a playable ISO. Use a "
        "dedicated CD-ripping tool for audio.");
}
