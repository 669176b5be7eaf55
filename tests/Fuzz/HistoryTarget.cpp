#include <QBuffer>
#include <QTimeZone>
#include <cmath>
#include <cstring>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "FuzzText.h"
#include "SpeedTestResult.h"

namespace {

std::optional<QList<SpeedTestResult>> decoded(QByteArray document) {
    QBuffer buffer(&document);
    buffer.open(QIODevice::ReadOnly);
    return decodeHistory(buffer);
}

void ensureKept(const QList<SpeedTestResult>& results) {
    const auto document = encodeHistory(results);
    ensure(document.has_value(), "a history can be written");
    ensure(decoded(*document) == results, "a history that was written is read as it was");
}

// A result that the program could have made, with these bytes' texts and numbers.
SpeedTestResult resultOf(FuzzInput input) {
    SpeedTestResult result;
    result.id = QUuid::createUuidV5(QUuid(), FuzzText::bytesOf(input.rest()));
    result.driveKey = FuzzText::of(input.text());
    result.driveModelString = FuzzText::of(input.text());
    result.discKind = FuzzText::of(input.text());
    result.discSizeBytes = input.number();
    const auto bits = static_cast<std::uint64_t>(input.number());
    std::memcpy(&result.averageBytesPerSecond, &bits, sizeof(bits));
    constexpr qint64 firstSecond = -62135596800;  // of the year 1
    constexpr qint64 lastSecond = 253402300799;   // of the year 9999
    const auto second = std::clamp<qint64>(input.number(), firstSecond, lastSecond);
    result.date = QDateTime::fromSecsSinceEpoch(second, QTimeZone::utc());
    result.source =
        input.isEmpty() ? SpeedTestResult::Source::rip : SpeedTestResult::Source::speedTest;
    return result;
}

}  // namespace

FUZZ_TARGET(History) {
    if (const auto results = decoded(FuzzText::bytesOf(bytes))) {
        for (const SpeedTestResult& result : *results) {
            ensure(result.date.isValid(), "a date is valid");
            ensure(std::isfinite(result.averageBytesPerSecond), "a speed is a number");
            ensure(!speedMultipleText(result).isEmpty(), "a speed has a text");
        }
        ensureKept(*results);
    }
    const SpeedTestResult result = resultOf(FuzzInput(bytes));
    if (std::isfinite(result.averageBytesPerSecond)) {
        ensureKept({result, result});
    }
}
