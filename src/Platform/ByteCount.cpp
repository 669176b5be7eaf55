#include "ByteCount.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

struct Unit {
    const char* name;
    quint64 bytes;
    int decimals;
};

constexpr std::array<Unit, 6> units = {{
    {"KB", 1'000, 0},
    {"MB", 1'000'000, 1},
    {"GB", 1'000'000'000, 2},
    {"TB", 1'000'000'000'000, 2},
    {"PB", 1'000'000'000'000'000, 2},
    {"EB", 1'000'000'000'000'000'000, 2},
}};

quint64 powerOfTen(int exponent) {
    quint64 power = 1;
    for (int i = 0; i < exponent; ++i) {
        power *= 10;
    }
    return power;
}

// The magnitude in the unit's smallest shown step, half a step rounded up.
quint64 stepsOf(quint64 magnitude, const Unit& unit) {
    const quint64 step = unit.bytes / powerOfTen(unit.decimals);
    const quint64 rest = magnitude % step;
    return magnitude / step + (rest >= step - rest ? 1 : 0);
}

QString decimalText(quint64 steps, int decimals, const QLocale& locale) {
    const quint64 scale = powerOfTen(decimals);
    QString text = QString::number(steps / scale);
    QString fraction = QString::number(steps % scale).rightJustified(decimals, QLatin1Char('0'));
    if (decimals == 0) {
        fraction.clear();
    }
    while (fraction.endsWith(QLatin1Char('0'))) {
        fraction.chop(1);
    }
    if (!fraction.isEmpty()) {
        text += locale.decimalPoint() + fraction;
    }
    return text;
}

}  // namespace

QString ByteCount::format(qint64 bytes, const QLocale& locale) {
    if (bytes == 0) {
        return QStringLiteral("Zero KB");
    }
    const QString sign = bytes < 0 ? QStringLiteral("-") : QString();
    // Unsigned arithmetic: the most negative number has no positive counterpart.
    const quint64 magnitude =
        bytes < 0 ? quint64(0) - static_cast<quint64>(bytes) : static_cast<quint64>(bytes);
    if (magnitude < 1000) {
        return sign + QString::number(magnitude) +
               (magnitude == 1 ? QStringLiteral(" byte") : QStringLiteral(" bytes"));
    }
    for (const Unit& unit : units) {
        const quint64 steps = stepsOf(magnitude, unit);
        if (steps < 1000 * powerOfTen(unit.decimals) || &unit == &units.back()) {
            return sign + decimalText(steps, unit.decimals, locale) + QLatin1Char(' ') +
                   QLatin1String(unit.name);
        }
    }
    Q_UNREACHABLE();
}

QString ByteCount::formatSpeed(double bytesPerSecond, const QLocale& locale) {
    // The first double that no longer fits.
    constexpr double limit = 9223372036854775808.0;
    qint64 bytes = 0;
    if (!std::isfinite(bytesPerSecond)) {
        bytes = 0;
    } else if (bytesPerSecond >= limit) {
        bytes = std::numeric_limits<qint64>::max();
    } else if (bytesPerSecond < -limit) {
        bytes = std::numeric_limits<qint64>::min();
    } else {
        bytes = static_cast<qint64>(bytesPerSecond);
    }
    return format(bytes, locale) + QStringLiteral("/s");
}
