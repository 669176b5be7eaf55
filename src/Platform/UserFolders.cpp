#include "UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <vector>

namespace {

// A name that does not survive the way through text would name another folder: it counts as none.
std::optional<QString> fromEnvironment(const char* name) {
    const QByteArray value = qgetenv(name);
    const QString text = QFile::decodeName(value);
    if (value.isEmpty() || QFile::encodeName(text) != value) {
        return std::nullopt;
    }
    return text;
}

std::optional<QString> fromPasswordDatabase() {
    std::vector<char> buffer(size_t(16) * 1024);
    passwd entry = {};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found ||
        !found->pw_dir || found->pw_dir[0] == '\0') {
        return std::nullopt;
    }
    return QFile::decodeName(found->pw_dir);
}

std::optional<QString> homeIfKnown() {
    auto folder = fromEnvironment("HOME");
    if (!folder) {
        folder = fromPasswordDatabase();
    }
    while (folder && folder->endsWith(QLatin1Char('/'))) {
        folder->chop(1);
    }
    return folder;
}

bool isUsable(const QString& folder) {
    const QFileInfo info(folder);
    return info.isDir() && info.isWritable();
}

}  // namespace

QString UserFolders::temporary() {
    QString folder = QStringLiteral("/tmp");
    if (const auto chosen = fromEnvironment("TMPDIR")) {
        // The tools are given this path; it must mean the same folder to them.
        folder = QDir(*chosen).absolutePath();
    } else if (isUsable(QStringLiteral("/var/tmp"))) {
        folder = QStringLiteral("/var/tmp");
    }
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

QString UserFolders::home() {
    return homeIfKnown().value_or(QString());
}

std::optional<QString> UserFolders::data() {
    // The desktop's rule for this variable: a relative path counts as none.
    const auto chosen = fromEnvironment("XDG_DATA_HOME");
    if (chosen && QDir::isAbsolutePath(*chosen)) {
        return QDir::cleanPath(*chosen);
    }
    const auto home = homeIfKnown();
    if (!home) {
        return std::nullopt;
    }
    return *home + QStringLiteral("/.local/share");
}

QString UserFolders::freshIdentifier() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}
