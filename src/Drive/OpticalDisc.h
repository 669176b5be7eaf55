// The disc in the drive, as a plain value.
#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

enum class DiscKind { cd, dvd, bd, unknown };

// "CD", "DVD", "BD", "Disc": stored in files and shown to users.
QString rawValue(DiscKind kind);

// The kind with exactly this raw value (case-sensitive); absent for any other text.
std::optional<DiscKind> discKindFromRawValue(const QString& rawValue);

// The kind of a disc whose type the drive tool printed as this text; anything that mentions "BD" is
// a BD, else "DVD", else "CD", in any letter case.
DiscKind discKindFromRawType(const QString& rawType);

struct OpticalDisc {
    QString bsdName;  // device name without "/dev/"; the record's identity
    QString rawType;  // as the drive tool printed it, "DVD+R DL"
    DiscKind kind = DiscKind::unknown;
    std::optional<QString> volumeName;
    std::optional<qint64> totalBytes;
    QString imageSourceBSDName;  // the device to read, without "/dev/"

    const QString& id() const { return bsdName; }

    // The volume's name, or the kind with the type text in parentheses: "CD (CD-ROM)".
    QString displayName() const;

    // Whether there is only music on it, and what its user has to know then.
    bool isAudio() const { return isAudioVolume(volumeName); }
    static bool isAudioVolume(const std::optional<QString>& volumeName);
    static QString audioWarning();

    bool operator==(const OpticalDisc&) const = default;
};
