// Reads the imaging tool's progress lines out of a stream of chunks.
//
// A plain value owned by one reader; not shared between threads. A chunk that is not UTF-8 by
// itself is dropped whole; a line counts when its end has come, and every newline character that
// Unicode knows ends one. The number behind "PERCENT:" is decimal with a point, whatever the
// locale; a line without one is passed over. Memory stays bounded whatever the tool prints.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class ProgressLines final {
public:
    // The fractions that the chunk completes, in order: 0 to 1, or -1 for a negative percentage.
    QList<double> append(const QByteArray& chunk);

private:
    void shortenBuffer();

    QString m_buffer;  // the line that has not ended yet
};
