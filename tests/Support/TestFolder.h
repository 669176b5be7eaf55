// A fresh folder that is the whole world of one test.
//
// While it exists, HOME, XDG_DATA_HOME, XDG_CONFIG_HOME, TMPDIR and SPINDRIFT_TOOL_ROOT point into
// it and no practice drive is set; at its end the environment is as it was and the folder is gone.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QTemporaryDir>
#include <optional>

class TestFolder final {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    QString path(const QString& relative = QString()) const;
    QString temporary() const { return path(QStringLiteral("tmp/")); }
    QString toolRoot() const { return path(QStringLiteral("tools")); }

    // Writes a file, with the folders above it, and gives its path.
    QString write(const QString& relative, const QByteArray& content) const;
    // The bytes of a file; absent when it cannot be read.
    static std::optional<QByteArray> read(const QString& path);
    // The names in a folder, sorted, hidden ones too.
    static QStringList list(const QString& path);

    // Sets (or with an absent value unsets) a variable until the folder's end.
    void setEnvironment(const char* name, const std::optional<QByteArray>& value);

private:
    QTemporaryDir m_folder;
    QMap<QByteArray, std::optional<QByteArray>> m_before;
};
