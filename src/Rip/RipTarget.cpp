#include "RipTarget.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>

#include "DiagnosticsStore.h"
#include "ErrorText.h"
#include "PracticeFolder.h"
#include "Preferences.h"

namespace {

QString translated(const char* sentence) {
    return QCoreApplication::translate("RipTarget", sentence);
}

// Why nothing can be put into the file's folder under its name; absent when nothing speaks against
// it.
std::optional<QString> objectionToPlace(const QFileInfo& file) {
    const QFileInfo place(file.path());
    if (!place.exists()) {
        return std::nullopt;
    }
    if (!place.isDir()) {
        return translated("“%1” is not a folder.").arg(file.path());
    }
    const QByteArray folder = QFile::encodeName(file.path());
    if (::faccessat(AT_FDCWD, folder.constData(), W_OK | X_OK, AT_EACCESS) != 0) {
        return translated("Nothing can be written to the folder “%1”: %2.")
            .arg(file.path(), errorText(errno));
    }
    const long longest = ::pathconf(folder.constData(), _PC_NAME_MAX);
    const qsizetype length = QFile::encodeName(file.fileName()).size();
    if (longest > 0 && length > longest) {
        return translated("The name of the file is too long: %1 bytes instead of at most %2.")
            .arg(length)
            .arg(longest);
    }
    return std::nullopt;
}

// Whether the path is the image that lies in the practice drive's tray.
bool isThePracticeDisc(const QFileInfo& file) {
    const auto practice = PracticeFolder::chosen();
    return practice && QFileInfo::exists(practice->disc()) &&
           QFileInfo(practice->disc()).canonicalFilePath() == file.canonicalFilePath();
}

// Whether both name one file, be it there yet or not.
bool areSame(const QFileInfo& one, const QFileInfo& other) {
    const auto folder = [](const QFileInfo& file) {
        return QFileInfo(file.path()).canonicalFilePath();
    };
    return one.exists() ? one.canonicalFilePath() == other.canonicalFilePath()
                        : one.fileName() == other.fileName() && folder(one) == folder(other);
}

// Whether the program keeps its history, its nicknames or its preferences there.
bool isOwn(const QFileInfo& file) {
    const QStringList own = DiagnosticsStore::files() + QStringList{Preferences::file()};
    return std::ranges::any_of(
        own, [&file](const QString& path) { return areSame(file, QFileInfo(path)); });
}

}  // namespace

std::optional<QString> RipTarget::absolutePath(const QString& file) {
    if (QDir::isAbsolutePath(file)) {
        return file;
    }
    // Without a current folder Qt's path of it is empty, and the file would land in the root.
    const QString folder = QDir::currentPath();
    if (!QFileInfo(folder).isDir()) {
        return std::nullopt;
    }
    // Not cleaned: "link/../disc.iso" is what the file system makes of it.
    return (folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/')) + file;
}

std::optional<QString> RipTarget::objection(const QString& path) {
    const QFileInfo file(path);
    if (path.endsWith(QLatin1Char('/')) || file.isDir()) {
        return translated("“%1” is a folder. Name the file to write.").arg(path);
    }
    if (file.exists() && !file.isFile()) {
        return translated("“%1” is not an ordinary file.").arg(path);
    }
    if (auto objection = objectionToPlace(file)) {
        return objection;
    }
    if (isOwn(file)) {
        return translated("“%1” is a file that Spindrift itself needs.").arg(path);
    }
    if (isThePracticeDisc(file)) {
        return translated("“%1” is the disc in the practice drive.").arg(path);
    }
    return std::nullopt;
}

bool RipTarget::hasFolder(const QString& path) {
    return QFileInfo::exists(QFileInfo(path).path());
}

bool RipTarget::isTaken(const QString& path) {
    const QFileInfo file(path);
    return file.exists() || file.isSymLink();
}
