// One measured average read speed, from a speed test or a rip, as a plain value.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>
#include <nlohmann/json_fwd.hpp>
#include <optional>

class QIODevice;

struct SpeedTestResult {
    enum class Source { rip, speedTest };

    QUuid id;
    QDateTime date;  // when the measurement ended
    QString driveKey;
    QString driveModelString;
    QString discKind;  // "CD", "DVD", "BD" or "Disc"
    qint64 discSizeBytes = 0;
    double averageBytesPerSecond = 0;
    Source source = Source::speedTest;

    // A result with a fresh identifier and the current date.
    static SpeedTestResult now(const QString& driveKey, const QString& driveModelString,
                               const QString& discKind, qint64 discSizeBytes,
                               double averageBytesPerSecond, Source source);

    nlohmann::ordered_json toJson() const;
    // Absent when a key is missing or anything in it is not in its exact form.
    static std::optional<SpeedTestResult> fromJson(const nlohmann::json& json);

    bool operator==(const SpeedTestResult&) const = default;
};

// "Rip", "Speed Test".
QString rawValue(SpeedTestResult::Source source);
std::optional<SpeedTestResult::Source> sourceFromRawValue(const QString& rawValue);

// The history file: a JSON array, newest first, pretty-printed. Absent when a value has no JSON
// form that could be read again: a speed that is not finite, a date outside the years 1 to 9999.
std::optional<QByteArray> encodeHistory(const QList<SpeedTestResult>& results);
// Absent when the document or any one element is not in its exact form; reads no further than that.
std::optional<QList<SpeedTestResult>> decodeHistory(QIODevice& document);

// How many times the single speed of its kind of disc this is: 1,385,000 bytes per second for
// "DVD", 4,500,000 for "BD", 150,000 for all others. As text: "8.0x"; a tie goes to the even digit,
// as in C's printf.
double speedMultiple(const SpeedTestResult& result);
QString speedMultipleText(const SpeedTestResult& result);
