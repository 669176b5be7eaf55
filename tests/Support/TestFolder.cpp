#include "TestFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

TestFolder::TestFolder() {
    for (const char* name : {"home", "data", "config", "tmp", "tools"}) {
        QDir().mkpath(path(QString::fromLatin1(name)));
    }
    setEnvironment("HOME", path(QStringLiteral("home")).toUtf8());
    setEnvironment("XDG_DATA_HOME", path(QStringLiteral("data")).toUtf8());
    setEnvironment("XDG_CONFIG_HOME", path(QStringLiteral("config")).toUtf8());
    setEnvironment("TMPDIR", path(QStringLiteral("tmp")).toUtf8());
    setEnvironment("SPINDRIFT_TOOL_ROOT", toolRoot().toUtf8());
    setEnvironment("SPINDRIFT_PRACTICE_DRIVE", std::nullopt);
    setEnvironment("SPINDRIFT_DRIVE", std::nullopt);
}

TestFolder::~TestFolder() {
    for (auto it = m_before.cbegin(); it != m_before.cend(); ++it) {
        if (it.value()) {
            qputenv(it.key().constData(), *it.value());
        } else {
            qunsetenv(it.key().constData());
        }
    }
}

QString TestFolder::path(const QString& relative) const {
    return relative.isEmpty() ? m_folder.path() : m_folder.filePath(relative);
}

QString TestFolder::write(const QString& relative, const QByteArray& content) const {
    const QString target = path(relative);
    QDir().mkpath(QFileInfo(target).path());
    QFile file(target);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(target));
    }
    return target;
}

std::optional<QByteArray> TestFolder::read(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll();
}

QStringList TestFolder::list(const QString& path) {
    return QDir(path).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

void TestFolder::setEnvironment(const char* name, const std::optional<QByteArray>& value) {
    if (!m_before.contains(name)) {
        m_before[name] =
            qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt;
    }
    if (value) {
        qputenv(name, *value);
    } else {
        qunsetenv(name);
    }
}
