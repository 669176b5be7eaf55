#include "PracticeFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>

#include "UserFolders.h"

namespace {

constexpr const char* environmentName = "SPINDRIFT_PRACTICE_DRIVE";
constexpr int foldersToTry = 64;

// The lock on the folder in use, held until the process ends or prepares another one. Only the
// process itself holds it: the tools that it starts do not inherit it.
int lockedFolder = -1;

void holdOnly(int descriptor) {
    if (lockedFolder >= 0) {
        ::close(lockedFolder);
    }
    lockedFolder = descriptor;
}

QString quoted(const QString& path) {
    return QStringLiteral("“") + path + QStringLiteral("”");
}

QString systemText(int number) {
    return qt_error_string(number);
}

// What is wrong with a file as a disc image; absent when it will do.
std::optional<QString> complaint(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) {
        return info.isSymLink() ? quoted(path) + QStringLiteral(" is a link to nothing.")
                                : quoted(path) + QStringLiteral(" does not exist.");
    }
    if (info.isDir()) {
        return quoted(path) + QStringLiteral(" is a folder, not a disc image.");
    }
    if (!info.isFile()) {
        return quoted(path) + QStringLiteral(" is not a file.");
    }
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return quoted(path) + QStringLiteral(" cannot be read: ") + systemText(errno) +
               QLatin1Char('.');
    }
    ::close(descriptor);
    return std::nullopt;
}

bool isThere(const QString& path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

QString inTheWay(const QString& path) {
    return quoted(path) + QStringLiteral(
                              " is not a link that this program made. Move it away to use another "
                              "disc image.");
}

// Replaces one link by another without a moment in which the tray is empty.
std::optional<QString> placeLink(const QString& target, const QString& link) {
    const QByteArray fresh = QFile::encodeName(link) + ".new" + QByteArray::number(::getpid());
    ::unlink(fresh.constData());
    if (::symlink(QFile::encodeName(target).constData(), fresh.constData()) != 0 ||
        ::rename(fresh.constData(), QFile::encodeName(link).constData()) != 0) {
        const int number = errno;
        ::unlink(fresh.constData());
        return quoted(link) + QStringLiteral(" cannot be made: ") + systemText(number) +
               QLatin1Char('.');
    }
    return std::nullopt;
}

// Puts the image into the folder's tray. A real file that the user has put there is never removed
// or replaced: without a wish for another image it stays the disc.
std::optional<QString> insert(const QDir& folder, const QString& image, bool imageWished) {
    const QString disc = folder.filePath(QStringLiteral("disc.iso"));
    const QString ejected = folder.filePath(QStringLiteral("ejected.iso"));
    const bool ownDisc = isThere(disc) && !QFileInfo(disc).isSymLink();
    const bool ownEjected = isThere(ejected) && !QFileInfo(ejected).isSymLink();
    if (ownDisc) {
        const bool same = QFileInfo(disc).canonicalFilePath() == image;
        return imageWished && !same ? std::optional(inTheWay(disc)) : std::nullopt;
    }
    if (ownEjected) {
        if (imageWished) {
            return inTheWay(ejected);
        }
        if (::rename(QFile::encodeName(ejected).constData(), QFile::encodeName(disc).constData()) !=
            0) {
            return quoted(disc) + QStringLiteral(" cannot be made: ") + systemText(errno) +
                   QLatin1Char('.');
        }
        return std::nullopt;
    }
    if (auto failure = placeLink(image, disc)) {
        return failure;
    }
    QFile::remove(ejected);
    return std::nullopt;
}

// A further folder behaves as the first one does.
void shareSettings(const QDir& first, const QDir& folder) {
    const QString name = QStringLiteral("drive.json");
    if (folder != first && first.exists(name) && !isThere(folder.filePath(name))) {
        QFile::link(first.filePath(name), folder.filePath(name));
    }
}

enum class Taken { Yes, No, Failed };

Taken take(const QDir& folder, const QString& image, bool imageWished, QString* error) {
    const int descriptor =
        ::open(QFile::encodeName(folder.path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        *error = quoted(folder.path()) + QStringLiteral(" cannot be opened: ") + systemText(errno) +
                 QLatin1Char('.');
        return Taken::Failed;
    }
    const bool alone = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    if (alone) {
        if (const auto failure = insert(folder, image, imageWished)) {
            ::close(descriptor);
            *error = *failure;
            return Taken::Failed;
        }
        ::flock(descriptor, LOCK_SH | LOCK_NB);
        holdOnly(descriptor);
        return Taken::Yes;
    }
    // Another process uses this drive: join it when the same disc is in, never change its disc.
    const QFileInfo disc(folder.filePath(QStringLiteral("disc.iso")));
    if (disc.exists() && disc.canonicalFilePath() == image &&
        ::flock(descriptor, LOCK_SH | LOCK_NB) == 0) {
        holdOnly(descriptor);
        return Taken::Yes;
    }
    ::close(descriptor);
    return Taken::No;
}

std::optional<PracticeFolder::Prepared> keepTheUsersFolder(const QString& folder, QString* error) {
    if (!QFileInfo(folder).isDir()) {
        *error = QStringLiteral("SPINDRIFT_PRACTICE_DRIVE names ") + quoted(folder) +
                 QStringLiteral(", which is not a folder.");
        return std::nullopt;
    }
    return PracticeFolder::Prepared{folder, QDir(folder).filePath(QStringLiteral("disc.iso"))};
}

}  // namespace

std::optional<PracticeFolder::Prepared> PracticeFolder::prepare(const std::optional<QString>& image,
                                                                QString* error) {
    const QByteArray present = qgetenv(environmentName);
    if (!image && !present.isEmpty()) {
        return keepTheUsersFolder(QFile::decodeName(present), error);
    }
    const auto wanted = image ? image : sampleDisc();
    if (!wanted) {
        *error = QStringLiteral("The sample disc is not installed. Name a disc image to use.");
        return std::nullopt;
    }
    if (const auto wrong = complaint(*wanted)) {
        *error = *wrong;
        return std::nullopt;
    }
    const auto data = UserFolders::data();
    if (!data) {
        *error = QStringLiteral("The user's data folder is not known.");
        return std::nullopt;
    }
    holdOnly(-1);
    const QString target = QFileInfo(*wanted).canonicalFilePath();
    const QDir first(*data + QStringLiteral("/Spindrift/practice-drive"));
    for (int number = 1; number <= foldersToTry; ++number) {
        const QDir folder(number == 1 ? first.path()
                                      : first.path() + QLatin1Char('-') + QString::number(number));
        if (!folder.mkpath(QStringLiteral("."))) {
            *error = quoted(folder.path()) + QStringLiteral(" cannot be made.");
            return std::nullopt;
        }
        switch (take(folder, target, image.has_value(), error)) {
            case Taken::Failed:
                return std::nullopt;
            case Taken::No:
                continue;
            case Taken::Yes:
                break;
        }
        shareSettings(first, folder);
        qputenv(environmentName, QFile::encodeName(folder.path()));
        return Prepared{folder.path(), folder.filePath(QStringLiteral("disc.iso"))};
    }
    *error = QStringLiteral("Too many practice drives are in use.");
    return std::nullopt;
}

std::optional<QString> PracticeFolder::sampleDisc() {
    const QString path =
        QDir::cleanPath(QCoreApplication::applicationDirPath() +
                        QStringLiteral("/" SPINDRIFT_DATA_FROM_BIN "/sample-disc.iso"));
    return QFileInfo(path).isFile() ? std::optional(path) : std::nullopt;
}
