// Byte counts as people read them: decimal units, as a file manager shows them.
#pragma once

#include <QLocale>
#include <QString>

namespace ByteCount {

// "Zero KB", "1 byte", "999 bytes", "2 KB", "5.2 MB", "4.7 GB", "1.25 TB": no decimals for KB, one
// for MB, up to two from GB on with trailing zeros dropped, never "1000 KB". Decimal point by the
// locale. Bytes may be negative.
QString format(qint64 bytes, const QLocale& locale = QLocale());

// A speed in bytes per second, truncated toward zero to whole bytes, with "/s" behind it. Not
// finite counts as zero.
QString formatSpeed(double bytesPerSecond, const QLocale& locale = QLocale());

}  // namespace ByteCount
