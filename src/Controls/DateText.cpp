#include "DateText.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace DateText {

QString abbreviated(const QDateTime& date, const QLocale& users) {
    // The locale "C" is nobody's language; its time has seconds in it.
    const QLocale locale =
        users.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : users;
    // Qt knows long dates ("Friday, January 31, 2025") and short ones ("1/31/25") only: the
    // abbreviated form is the long one with the weekday left out and the month's short name.
    static const QRegularExpression weekday(
        QStringLiteral("^\\s*d{3,4}\\p{P}*\\s*|\\s*\\p{P}*\\s*d{3,4}\\s*$"));
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(weekday);
    format.replace(QLatin1String("MMMM"), QLatin1String("MMM"));
    const QDateTime local = date.toLocalTime();
    return QCoreApplication::translate("DateText", "%1 at %2")
        .arg(locale.toString(local.date(), format),
             locale.toString(local.time(), QLocale::ShortFormat));
}

}  // namespace DateText
