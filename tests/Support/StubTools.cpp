#include "StubTools.h"

#include <QFile>
#include <QFileInfo>

namespace StubTools {

void write(const TestFolder& folder, const QString& fixedPath, const QByteArray& body) {
    const QByteArray name = QFileInfo(fixedPath).fileName().toUtf8();
    const QByteArray logPath = (folder.toolRoot() + QStringLiteral("/log")).toUtf8();
    // A new file, never an open one written over: a script that still runs keeps its own text.
    remove(folder, fixedPath);
    const QString path =
        folder.write(QStringLiteral("tools") + fixedPath,
                     "#!/bin/sh\necho \"" + name + " $*\" >> '" + logPath + "'\n" + body + "\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                    QFile::ReadOther | QFile::ExeOther);
}

void remove(const TestFolder& folder, const QString& fixedPath) {
    QFile::remove(folder.toolRoot() + fixedPath);
}

QStringList log(const TestFolder& folder) {
    const auto bytes = TestFolder::read(folder.toolRoot() + QStringLiteral("/log"));
    return QString::fromUtf8(bytes.value_or(QByteArray()))
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

}  // namespace StubTools
