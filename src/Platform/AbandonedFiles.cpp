#include "AbandonedFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <cerrno>
#include <ctime>
#include <optional>

#include "Descriptor.h"
#include "FileRemoval.h"

namespace {

// Locks are not known to every file system, nor beyond every network: a file that is needed is also
// written to all the time.
constexpr time_t longestPause = 3600;  // seconds

// Of the whole file. It belongs to the open file, unlike the older kind, and can be asked for
// without being taken, which would keep somebody else from it for a moment.
struct flock lockOf(short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

// When it was last written to; absent when the file is not ours or somebody needs it.
std::optional<time_t> abandonedSince(const QString& path) {
    const Descriptor file(
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat attributes = {};
    struct flock lock = lockOf(F_WRLCK);
    if (!file.isOpen() || fstat(file.number(), &attributes) != 0 || !S_ISREG(attributes.st_mode) ||
        attributes.st_uid != geteuid() ||
        (fcntl(file.number(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK)) {
        return std::nullopt;
    }
    return attributes.st_mtime;
}

QStringList pathsOf(const QString& folder, const AbandonedFiles::Names& names) {
    const QRegularExpression own(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(names.prefix) +
        QStringLiteral("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}") +
        QRegularExpression::escape(names.suffix)));
    const QDir place(folder);
    QStringList paths;
    for (const QString& name :
         place.entryList(QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Time)) {
        if (own.match(name).hasMatch()) {
            paths.append(place.filePath(name));
        }
    }
    return paths;
}

}  // namespace

void AbandonedFiles::claim(int descriptor) {
    struct flock lock = lockOf(F_WRLCK);
    if (fcntl(descriptor, F_OFD_SETLK, &lock) != 0 && errno == EBADF) {
        lock = lockOf(F_RDLCK);  // for a descriptor that only reads
        fcntl(descriptor, F_OFD_SETLK, &lock);
    }
}

QStringList AbandonedFiles::unclaimed(const QString& folder, const Names& names) {
    QStringList paths = pathsOf(folder, names);
    paths.removeIf([](const QString& path) { return !abandonedSince(path); });
    return paths;
}

void AbandonedFiles::removeFrom(const QString& folder, const Names& names) {
    for (const QString& path : pathsOf(folder, names)) {
        if (const auto since = abandonedSince(path);
            since && *since < time(nullptr) - longestPause) {
            FileRemoval::remove(path);
        }
    }
}

int AbandonedFiles::remove(const QString& path) {
    return abandonedSince(path) ? FileRemoval::remove(path) : EBUSY;
}
