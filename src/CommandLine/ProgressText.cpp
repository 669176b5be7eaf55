#include "ProgressText.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

#include "ByteCount.h"

namespace {

constexpr int longestBar = 30;
constexpr int shortestBar = 8;
constexpr double secondsWorthSaying = 100.0 * 3600;

bool fractionIsKnown(const ProgressState& state) {
    return std::isfinite(state.fraction) && state.fraction >= 0;
}

QStringList parts(const ProgressState& state) {
    QStringList result;
    if (fractionIsKnown(state)) {
        // Rounded down: 100 % is said when it is done, not before.
        const int percent = static_cast<int>(std::floor(std::min(state.fraction, 1.0) * 100));
        result << QString::number(percent) + QStringLiteral(" %");
    }
    QString bytes = ByteCount::format(state.bytes);
    if (state.totalBytes && *state.totalBytes > 0) {
        bytes += QStringLiteral(" of ") + ByteCount::format(*state.totalBytes);
    }
    result << bytes;
    if (std::isfinite(state.bytesPerSecond) && state.bytesPerSecond > 0) {
        result << ByteCount::formatSpeed(state.bytesPerSecond);
    }
    if (const auto seconds = ProgressText::secondsLeft(state)) {
        result << ProgressText::duration(*seconds) + QStringLiteral(" left");
    }
    return result;
}

QString bar(double fraction, int width) {
    const int cells = width - 2;
    const int full = static_cast<int>(std::floor(std::min(fraction, 1.0) * cells));
    return QLatin1Char('[') + QString(full, QLatin1Char('=')) +
           QString(cells - full, QLatin1Char(' ')) + QLatin1Char(']');
}

}  // namespace

std::optional<qint64> ProgressText::secondsLeft(const ProgressState& state) {
    if (!std::isfinite(state.bytesPerSecond) || state.bytesPerSecond <= 0) {
        return std::nullopt;
    }
    const auto bytes = static_cast<double>(state.bytes);
    double left = 0;
    if (state.totalBytes && *state.totalBytes > 0) {
        left = static_cast<double>(*state.totalBytes) - bytes;
    } else if (fractionIsKnown(state) && state.fraction > 0) {
        left = bytes * (1 - std::min(state.fraction, 1.0)) / state.fraction;
    } else {
        return std::nullopt;
    }
    const double seconds = std::max(left, 0.0) / state.bytesPerSecond;
    if (!(seconds < secondsWorthSaying)) {
        return std::nullopt;
    }
    return static_cast<qint64>(std::ceil(seconds));
}

QString ProgressText::duration(qint64 seconds) {
    if (seconds < 60) {
        return QString::number(seconds) + QStringLiteral(" s");
    }
    const auto twoDigits = [](qint64 value) {
        return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
    };
    if (seconds < 3600) {
        return QString::number(seconds / 60) + QLatin1Char(':') + twoDigits(seconds % 60);
    }
    return QString::number(seconds / 3600) + QLatin1Char(':') + twoDigits(seconds / 60 % 60) +
           QLatin1Char(':') + twoDigits(seconds % 60);
}

QString ProgressText::plain(const ProgressState& state) {
    return parts(state).join(QStringLiteral(", "));
}

QString ProgressText::forTerminal(const ProgressState& state, int columns) {
    QStringList pieces = parts(state);
    const QString gap = QStringLiteral("  ");
    QString text = pieces.join(gap);
    if (fractionIsKnown(state)) {
        const int room = columns - static_cast<int>(text.size() + gap.size());
        if (room >= shortestBar) {
            return bar(state.fraction, std::min(room, longestBar)) + gap + text;
        }
    }
    while (text.size() > columns && pieces.size() > 1) {
        pieces.removeLast();
        text = pieces.join(gap);
    }
    return text.left(std::max(columns, 0));
}
