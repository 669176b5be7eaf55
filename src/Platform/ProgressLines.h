// Reads the imaging tool's progress lines out of a stream of chunks.
//
// A plain value owned by one reader; not shared between threads. A chunk that is not UTF-8 by
// itself is dropped whole; a line counts when its end has come, and every newline character that
// Unicode knows ends one.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class ProgressLines final {
public:
    // The fractions that the chunk completes, in order: 0 to 1, or -1 for a negative percentage.
    QList<double> append(const QByteArray& chunk);

private:
    QString m_buffer;
};
