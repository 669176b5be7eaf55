// Turns the disc tools' text into records.
//
// The parsers are pure; the queries run diskutil and block for as long as it takes. Nothing here
// reports an error: every failure is an absent result or the fallback that is named. Any thread.
#pragma once

#include <QString>
#include <optional>

#include "DriveIdentity.h"

namespace DriveStatus {

struct DiscLine {
    QString rawType;
    QString bsdName;

    bool operator==(const DiscLine&) const = default;
};

// The disc's type and device from the drive tool's status report; absent without a disc.
std::optional<DiscLine> parseStatus(const QString& text);

// The drive's identity from the column table at the head of the same report.
std::optional<DriveIdentity> parseDriveIdentity(const QString& text);

// diskutil's answers, parsed; absent as in the queries below.
std::optional<QString> parseVolumeName(const QString& infoPropertyList);
std::optional<QString> parseFirstVolume(const QString& listPropertyList);
std::optional<QString> parseImageSource(const QString& listing, const QString& bsdName);
std::optional<qint64> parseTotalBytes(const QString& infoPropertyList);

// Runs "diskutil info -plist", then if need be "list -plist". Absent when the disc has no name.
std::optional<QString> volumeName(const QString& bsdName);

// The device to read when the disc is imaged: the last slice of "diskutil list", else the disc.
enum class Audio { No, Yes };
QString imageSourceBSDName(const QString& bsdName, Audio audio);

// Size in bytes from "diskutil info -plist"; absent when unknown.
std::optional<qint64> totalBytes(const QString& bsdName);

}  // namespace DriveStatus
