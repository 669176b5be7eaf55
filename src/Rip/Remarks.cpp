#include "Remarks.h"

QStringList remarksIn(const QByteArray& errorOutput) {
    QStringList remarks;
    for (QString line : QString::fromUtf8(errorOutput).split(QLatin1Char('\n'))) {
        line = line.trimmed();
        const QString tool = QStringLiteral("hdiutil:");
        if (line.startsWith(tool)) {
            line = line.mid(tool.size()).trimmed();
        }
        if (!line.isEmpty()) {
            remarks.append(line);
        }
    }
    return remarks;
}
