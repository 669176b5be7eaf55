#include "DriveStatus.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

#include "Characters.h"
#include "PropertyListParser.h"
#include "ShellCommand.h"

namespace {

const QString diskutil = QStringLiteral("/usr/sbin/diskutil");
const QString devicePrefix = QStringLiteral("/dev/");

// Blanks and tabs at both ends; line ends stay.
QString trimmed(const QString& text) {
    const auto isBlank = [](QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); };
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && isBlank(text[start])) {
        ++start;
    }
    while (end > start && isBlank(text[end - 1])) {
        --end;
    }
    return text.mid(start, end - start);
}

qsizetype columnOf(const QString& header, const QString& title) {
    return Characters::of(header.left(header.indexOf(title))).size();
}

QString cut(const QStringList& line, qsizetype from, std::optional<qsizetype> to) {
    const qsizetype start = std::clamp<qsizetype>(from, 0, line.size());
    const qsizetype end = std::max(start, std::min(to.value_or(line.size()), line.size()));
    return trimmed(line.mid(start, end - start).join(QString()));
}

QStringList argumentsFor(const QString& verb, const QString& bsdName) {
    return {verb, QStringLiteral("-plist"), devicePrefix + bsdName};
}

}  // namespace

std::optional<DriveStatus::DiscLine> DriveStatus::parseStatus(const QString& text) {
    const QString typeTitle = QStringLiteral("Type:");
    const QString nameTitle = QStringLiteral("Name:");
    for (const QString& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const qsizetype type = line.indexOf(typeTitle);
        const qsizetype name = line.indexOf(nameTitle);
        if (type < 0 || name < 0) {
            continue;
        }
        const qsizetype typeStart = type + typeTitle.size();
        if (name < typeStart) {
            return std::nullopt;
        }
        const QString typeText = trimmed(line.mid(typeStart, name - typeStart));
        const QString nameText = trimmed(line.mid(name + nameTitle.size()));
        if (typeText.isEmpty() || typeText.toLower() == QLatin1String("none") ||
            !nameText.startsWith(devicePrefix)) {
            return std::nullopt;
        }
        return DiscLine{typeText, nameText.mid(devicePrefix.size())};
    }
    return std::nullopt;
}

std::optional<DriveIdentity> DriveStatus::parseDriveIdentity(const QString& text) {
    const QString vendor = QStringLiteral("Vendor");
    const QString product = QStringLiteral("Product");
    const QString revision = QStringLiteral("Rev");
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString& header = lines[i];
        if (!header.contains(vendor) || !header.contains(product) || !header.contains(revision)) {
            continue;
        }
        if (i + 1 == lines.size()) {
            return std::nullopt;
        }
        const QStringList values = Characters::of(lines[i + 1]);
        const qsizetype v = columnOf(header, vendor);
        const qsizetype p = columnOf(header, product);
        const qsizetype r = columnOf(header, revision);
        const DriveIdentity identity{cut(values, v, p), cut(values, p, r),
                                     cut(values, r, std::nullopt)};
        return identity.vendor.isEmpty() ? std::nullopt : std::optional(identity);
    }
    return std::nullopt;
}

std::optional<QString> DriveStatus::parseVolumeName(const QString& infoPropertyList) {
    const auto dictionary = PropertyListParser::parseDictionary(infoPropertyList);
    if (!dictionary) {
        return std::nullopt;
    }
    const PropertyListParser::Value value = dictionary->value(QStringLiteral("VolumeName"));
    const auto* name = std::get_if<QString>(&value);
    return name != nullptr && !name->isEmpty() ? std::optional(*name) : std::nullopt;
}

std::optional<QString> DriveStatus::parseFirstVolume(const QString& listPropertyList) {
    const auto dictionary = PropertyListParser::parseDictionary(listPropertyList);
    if (!dictionary) {
        return std::nullopt;
    }
    const PropertyListParser::Value value = dictionary->value(QStringLiteral("VolumesFromDisks"));
    const auto* names = std::get_if<QStringList>(&value);
    return names != nullptr && !names->isEmpty() && !names->first().isEmpty()
               ? std::optional(names->first())
               : std::nullopt;
}

std::optional<QString> DriveStatus::parseImageSource(const QString& listing,
                                                     const QString& bsdName) {
    const QString wanted = bsdName + QLatin1Char('s');
    std::optional<QString> last;
    for (const QString& line : listing.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList pieces = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (!pieces.isEmpty() && pieces.last().startsWith(wanted)) {
            last = pieces.last();
        }
    }
    return last;
}

std::optional<qint64> DriveStatus::parseTotalBytes(const QString& infoPropertyList) {
    const auto dictionary = PropertyListParser::parseDictionary(infoPropertyList);
    if (!dictionary) {
        return std::nullopt;
    }
    const PropertyListParser::Value total = dictionary->value(QStringLiteral("TotalSize"));
    const PropertyListParser::Value size = dictionary->value(QStringLiteral("Size"));
    if (const auto* bytes = std::get_if<qint64>(&total)) {
        return *bytes;
    }
    if (const auto* bytes = std::get_if<qint64>(&size)) {
        return *bytes;
    }
    // A whole number written as a real one, as far as it converts exactly.
    constexpr double limit = 9223372036854775808.0;
    if (const auto* bytes = std::get_if<double>(&total)) {
        if (std::isfinite(*bytes) && *bytes == std::trunc(*bytes) && *bytes >= -limit &&
            *bytes < limit) {
            return static_cast<qint64>(*bytes);
        }
    }
    return std::nullopt;
}

std::optional<QString> DriveStatus::volumeName(const QString& bsdName) {
    const auto info = ShellCommand::run(diskutil, argumentsFor(QStringLiteral("info"), bsdName));
    if (info.exitCode == 0) {
        if (auto name = parseVolumeName(info.standardOutput)) {
            return name;
        }
    }
    const auto list = ShellCommand::run(diskutil, argumentsFor(QStringLiteral("list"), bsdName));
    return list.exitCode == 0 ? parseFirstVolume(list.standardOutput) : std::nullopt;
}

QString DriveStatus::imageSourceBSDName(const QString& bsdName, Audio audio) {
    if (audio == Audio::Yes) {
        return bsdName;
    }
    const auto list = ShellCommand::run(diskutil, {QStringLiteral("list"), devicePrefix + bsdName});
    if (list.exitCode != 0) {
        return bsdName;
    }
    return parseImageSource(list.standardOutput, bsdName).value_or(bsdName);
}

std::optional<qint64> DriveStatus::totalBytes(const QString& bsdName) {
    const auto info = ShellCommand::run(diskutil, argumentsFor(QStringLiteral("info"), bsdName));
    return info.exitCode == 0 ? parseTotalBytes(info.standardOutput) : std::nullopt;
}
