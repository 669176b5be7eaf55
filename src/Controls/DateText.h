// Dates as the history shows them. Stateless; any thread.
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

namespace DateText {

// Abbreviated date and short time in the user's time zone: "Jan 31, 2025 at 6:04 PM" in English.
QString abbreviated(const QDateTime& date, const QLocale& locale = QLocale());

}  // namespace DateText
