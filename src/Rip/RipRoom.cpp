#include "RipRoom.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <limits>

#include "ByteCount.h"
#include "UserFolders.h"

namespace {

constexpr qint64 unlimited = std::numeric_limits<qint64>::max() / 4;
constexpr qint64 longestFileOfFat = std::numeric_limits<quint32>::max();
constexpr qint64 bytesOfStatBlock = 512;

QString inWords(const char* sentence) {
    return QCoreApplication::translate("RipRoom", sentence);
}

std::optional<QString> objection(const RipRoom::Rip& rip, const RipRoom::Place& temporary,
                                 const RipRoom::Place& destination) {
    const bool together = temporary.fileSystem == destination.fileSystem;
    const qint64 image = rip.imageBytes;
    const QString size = ByteCount::format(image);
    if (image > destination.longestFile) {
        return inWords(
                   "No file in “%1” can be as large as the image, which takes %2. Choose a "
                   "folder on another file system.")
            .arg(destination.folder, size);
    }
    if (image > temporary.longestFile) {
        return inWords(
                   "No file in “%1” can be as large as the image, which takes %2. Set "
                   "TMPDIR to a folder on another file system.")
            .arg(temporary.folder, size);
    }
    // The image is whole before it replaces anything in its own file system.
    const qint64 there = destination.freeBytes + (together ? 0 : rip.replacedBytes);
    if (there < image) {
        return inWords(
                   "“%1” lacks %2 of room for the image, which takes %3. Choose a folder "
                   "with more room.")
            .arg(destination.folder, ByteCount::format(image - there), size);
    }
    if (temporary.freeBytes < image) {
        return inWords(
                   "“%1” lacks %2 of room for the temporary image, which takes %3. Set "
                   "TMPDIR to a folder with more room, or choose another destination.")
            .arg(temporary.folder, ByteCount::format(image - temporary.freeBytes), size);
    }
    // The temporary image is gone before the second one comes, unless it is now the image itself.
    const qint64 forSecond = temporary.freeBytes + rip.replacedBytes - image;
    if (together && rip.thorough && forSecond < image) {
        return inWords(
                   "“%1” lacks %2 of room for the second image of a thorough verification, "
                   "which takes %3, too. Choose a folder with more room, or set TMPDIR to a "
                   "folder on another file system.")
            .arg(destination.folder, ByteCount::format(image - forSecond), size);
    }
    return std::nullopt;
}

RipRoom::Place placeOf(const QString& folder) {
    const QByteArray path = QFile::encodeName(folder);
    RipRoom::Place place{folder, 0, unlimited, unlimited};
    struct stat status = {};
    struct statfs system = {};
    if (stat(path.constData(), &status) != 0 || statfs(path.constData(), &system) != 0) {
        return place;
    }
    place.fileSystem = status.st_dev;
    // Some user-space and network file systems tell nothing about their size.
    if (system.f_blocks > 0) {
        place.freeBytes = static_cast<qint64>(system.f_bavail) * system.f_frsize;
    }
    if (system.f_type == MSDOS_SUPER_MAGIC) {
        place.longestFile = longestFileOfFat;
    }
    return place;
}

qint64 bytesThatGoWith(const QString& path) {
    struct stat status = {};
    const bool goes = lstat(QFile::encodeName(path).constData(), &status) == 0 &&
                      S_ISREG(status.st_mode) && status.st_nlink == 1;
    return goes ? status.st_blocks * bytesOfStatBlock : 0;
}

}  // namespace

RipRoom::Plan RipRoom::plan(const Rip& rip, const Place& temporary, const Place& destination) {
    const auto usual = objection(rip, temporary, destination);
    if (usual && !objection(rip, destination, destination)) {
        return {destination.folder, std::nullopt};
    }
    return {temporary.folder, usual};
}

RipRoom::Plan RipRoom::plan(std::optional<qint64> imageBytes, bool thorough,
                            const QString& destination, Replacing replacing) {
    const QString usual = QDir::cleanPath(UserFolders::temporary());
    const QString folder = QFileInfo(destination).path();
    if (!imageBytes || ::access(QFile::encodeName(folder).constData(), W_OK | X_OK) != 0) {
        return {usual, std::nullopt};
    }
    const qint64 replaced = replacing == Replacing::Yes ? bytesThatGoWith(destination) : 0;
    return plan({*imageBytes, thorough, replaced}, placeOf(usual), placeOf(folder));
}
