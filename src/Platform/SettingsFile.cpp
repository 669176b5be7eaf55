#include "SettingsFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "Descriptor.h"
#include "IniText.h"
#include "WriteAll.h"

namespace {

// Behind all symbolic links, whether there is a file or not.
QString targetOf(QString path) {
    // As many as the kernel follows.
    for (int links = 0; links < 40 && QFileInfo(path).isSymLink(); ++links) {
        path = QFileInfo(path).symLinkTarget();
    }
    return path;
}

// Held until the descriptor closes; not open, with errno, when there can be none.
Descriptor lockIn(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder + QLatin1String("/.Spindrift.lock"));
    Descriptor lock(open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, DEFFILEMODE));
    if (!lock.isOpen() && errno == EACCES) {
        // Root's, from a run with this user's folders.
        lock = Descriptor(open(path.constData(), O_RDONLY | O_CLOEXEC));
    }
    while (lock.isOpen() && flock(lock.number(), LOCK_EX) != 0) {
        if (errno != EINTR) {
            return {};
        }
    }
    return lock;
}

// The folder's entry is on the disk, too.
bool syncFolder(const QString& folder) {
    const Descriptor opened(
        open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Not every file system has such a thing.
    return opened.isOpen() && (fsync(opened.number()) == 0 || errno == EINVAL);
}

bool replace(const QString& path, const QByteArray& text) {
    const QByteArray name = QFile::encodeName(path);
    QByteArray temporary = name + ".XXXXXX";
    const Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        return false;
    }
    struct stat before = {};
    if (stat(name.constData(), &before) == 0) {
        // The user's file stays the user's when root writes.
        [[maybe_unused]] const int owned = fchown(file.number(), before.st_uid, before.st_gid);
        [[maybe_unused]] const int allowed = fchmod(file.number(), before.st_mode & ALLPERMS);
    }
    if (!writeAll(file.number(), text) || fsync(file.number()) != 0 ||
        rename(temporary.constData(), name.constData()) != 0) {
        const int error = errno;
        unlink(temporary.constData());
        errno = error;
        return false;
    }
    return syncFolder(QFileInfo(path).path());
}

}  // namespace

std::optional<QByteArray> SettingsFile::read(const QString& path) {
    const Descriptor file(
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen()) {
        return errno == ENOENT || errno == ENOTDIR ? std::optional(QByteArray()) : std::nullopt;
    }
    struct stat status = {};
    if (fstat(file.number(), &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return std::nullopt;
    }
    QByteArray text;
    std::array<char, 4096> block{};
    for (;;) {
        const ssize_t count = ::read(file.number(), block.data(), block.size());
        if (count > 0) {
            text.append(block.data(), count);
        } else if (count == 0) {
            return text;
        } else if (errno != EINTR) {
            return std::nullopt;
        }
    }
}

int SettingsFile::update(const QString& path, const QMap<QByteArray, QByteArray>& values) {
    const QString folder = QFileInfo(path).path();
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(folder).toStdString(), error);
    if (error) {
        return error.value();
    }
    const Descriptor lock = lockIn(folder);
    if (!lock.isOpen()) {
        return errno;
    }
    const auto before = read(path);
    if (!before) {
        return errno;
    }
    QByteArray text = *before;
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        text = IniText::withValue(text, value.key(), value.value());
    }
    return text == *before || replace(targetOf(path), text) ? 0 : errno;
}
