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
#include <nlohmann/json.hpp>

#include "Descriptor.h"
#include "ErrorText.h"
#include "UserFolders.h"

namespace {

constexpr const char* environmentName = "SPINDRIFT_PRACTICE_DRIVE";
constexpr int foldersToTry = 64;

// The lock on the folder in use, held until the process ends or prepares another one. Only the
// process itself holds it: the tools that it starts do not inherit it.
Descriptor lockedFolder;

QString quoted(const QString& path) {
    return QStringLiteral("“") + path + QStringLiteral("”");
}

// The sentence about what the system has just refused.
QString refusal(const QString& path, const char* participle) {
    const QString reason = errorText(errno);
    return quoted(path) +
           QStringLiteral(" cannot be %1: %2.").arg(QLatin1String(participle), reason);
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
    const Descriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
        return refusal(path, "read");
    }
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
        const QString failure = refusal(link, "made");
        ::unlink(fresh.constData());
        return failure;
    }
    return std::nullopt;
}

// Puts the image into the folder's tray. A real file that the user has put there is never removed
// or replaced: without a wish for another image it stays the disc.
std::optional<QString> insert(const PracticeFolder& folder, const QString& image,
                              bool imageWished) {
    const QString disc = folder.disc();
    const QString ejected = QDir(folder.path).filePath(QStringLiteral("ejected.iso"));
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
            return refusal(disc, "made");
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
void shareSettings(const PracticeFolder& first, const PracticeFolder& folder) {
    if (QFile::exists(first.settings()) && !isThere(folder.settings())) {
        QFile::link(first.settings(), folder.settings());
    }
}

enum class Taken { Yes, No, Failed };

Taken take(const PracticeFolder& folder, const QString& image, bool imageWished, QString* error) {
    Descriptor lock(
        ::open(QFile::encodeName(folder.path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock.isOpen()) {
        *error = refusal(folder.path, "opened");
        return Taken::Failed;
    }
    const QFileInfo disc(folder.disc());
    if (::flock(lock.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
        if (const auto failure = insert(folder, image, imageWished)) {
            *error = *failure;
            return Taken::Failed;
        }
        ::flock(lock.number(), LOCK_SH | LOCK_NB);
    } else if (!disc.exists() || disc.canonicalFilePath() != image ||
               ::flock(lock.number(), LOCK_SH | LOCK_NB) != 0) {
        // Another process uses this drive, and its disc is never changed.
        return Taken::No;
    }
    lockedFolder = std::move(lock);
    return Taken::Yes;
}

}  // namespace

std::optional<PracticeFolder> PracticeFolder::chosen() {
    const QByteArray folder = qgetenv(environmentName);
    return folder.isEmpty() ? std::nullopt
                            : std::optional(PracticeFolder{QFile::decodeName(folder)});
}

std::optional<PracticeFolder> PracticeFolder::prepare(const std::optional<QString>& image,
                                                      QString* error) {
    if (const auto present = chosen(); present && !image) {
        if (!QFileInfo(present->path).isDir()) {
            *error = QStringLiteral("SPINDRIFT_PRACTICE_DRIVE names ") + quoted(present->path) +
                     QStringLiteral(", which is not a folder.");
            return std::nullopt;
        }
        return present;
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
    lockedFolder.close();
    const QString target = QFileInfo(*wanted).canonicalFilePath();
    const PracticeFolder first{*data + QStringLiteral("/Spindrift/practice-drive")};
    for (int number = 1; number <= foldersToTry; ++number) {
        const PracticeFolder folder{
            number == 1 ? first.path : first.path + QLatin1Char('-') + QString::number(number)};
        if (!QDir().mkpath(folder.path)) {
            *error = quoted(folder.path) + QStringLiteral(" cannot be made.");
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
        qputenv(environmentName, QFile::encodeName(folder.path));
        return folder;
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

QString PracticeFolder::disc() const {
    return QDir(path).filePath(QStringLiteral("disc.iso"));
}

QString PracticeFolder::settings() const {
    return QDir(path).filePath(QStringLiteral("drive.json"));
}

std::optional<bool> PracticeFolder::deniesAccess() const {
    QFile file(settings());
    if (!file.exists()) {
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray content = file.readAll();
    const auto json = nlohmann::json::parse(content.cbegin(), content.cend(), nullptr, false);
    // The parser takes a null byte for the end.
    if (!json.is_object() || content.contains('\0')) {
        return std::nullopt;
    }
    const auto denies = json.value("denyAccess", nlohmann::json(false));
    return denies.is_boolean() ? std::optional(denies.get<bool>()) : std::nullopt;
}
