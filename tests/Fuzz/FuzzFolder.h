// A folder for the files that a target writes, in memory where the system has such a place; gone at
// the program's end.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

class FuzzFolder final {
public:
    FuzzFolder()
        : m_folder((QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm")
                                                              : QDir::tempPath()) +
                   QStringLiteral("/spindrift-fuzz-XXXXXX")) {}

    QString path(const QString& name = QString()) const { return m_folder.filePath(name); }

    void write(const QString& name, const QByteArray& content) const {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("A file of the target's own cannot be written.");
        }
    }

private:
    QTemporaryDir m_folder;
};
