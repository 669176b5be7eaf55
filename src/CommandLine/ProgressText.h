// How far a rip or a speed test is, as a line of text. Pure; any thread.
#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

struct ProgressState {
    double fraction = 0;  // 0 to 1; negative: not known
    qint64 bytes = 0;
    std::optional<qint64> totalBytes;
    double bytesPerSecond = 0;

    bool operator==(const ProgressState&) const = default;
};

namespace ProgressText {

// Seconds until the end at the present speed; absent while speed or distance are not known.
std::optional<qint64> secondsLeft(const ProgressState& state);

// "8 s", "4:10", "1:02:03".
QString duration(qint64 seconds);

// "42 %, 1.9 GB of 4.7 GB, 11.2 MB/s, 4:10 left", as much of it as is known.
QString plain(const ProgressState& state);

// The same with a bar in front, never wider than the columns: the bar shrinks, then parts from the
// right end go.
QString forTerminal(const ProgressState& state, int columns);

}  // namespace ProgressText
