#include "FileRemoval.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <memory>

#include "BackgroundThread.h"
#include "UserFolders.h"

namespace {

// Below this the thread costs more than the wait.
constexpr off_t worthAThread = off_t(64) * 1024 * 1024;
constexpr off_t bytesOfABlock = 512;  // of stat()

bool isRegularFile(const QString& path) {
    struct stat attributes = {};
    return lstat(QFile::encodeName(path).constData(), &attributes) == 0 &&
           S_ISREG(attributes.st_mode);
}

// Qt takes the current folder for the trash when it cannot make one.
bool canHaveTrash() {
    const auto data = UserFolders::data();
    if (!data || !QDir().mkpath(*data)) {
        return false;
    }
    const QFileInfo trash(*data + QStringLiteral("/Trash"));
    return trash.exists() ? trash.isDir() && trash.isWritable() : QFileInfo(*data).isWritable();
}

}  // namespace

Descriptor FileRemoval::hold(const QString& path) {
    // The name and not the content: opening a device or a pipe can do things to it, and a link's
    // target is not what is removed.
    Descriptor content(open(QFile::encodeName(path).constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat attributes = {};
    // By the space that it takes, too: an image has all of its own from the start.
    if (!content.isOpen() || fstat(content.number(), &attributes) != 0 ||
        !S_ISREG(attributes.st_mode) ||
        std::max<off_t>(attributes.st_size, attributes.st_blocks * bytesOfABlock) < worthAThread) {
        return Descriptor();
    }
    return content;
}

void FileRemoval::release(Descriptor content) {
    if (!content.isOpen()) {
        return;
    }
    // Without a thread the space is freed here and now.
    BackgroundThread::start(
        BackgroundThread::Priority::Normal,
        [owned = std::make_shared<Descriptor>(std::move(content))] { owned->close(); },
        BackgroundThread::Life::Unawaited);
}

std::optional<FileRemoval::Identity> FileRemoval::identityOf(const QString& path) {
    struct stat attributes = {};
    if (lstat(QFile::encodeName(path).constData(), &attributes) != 0) {
        return std::nullopt;
    }
    return Identity{attributes.st_dev, attributes.st_ino};
}

int FileRemoval::moveToTrash(const QString& path) {
    if (isRegularFile(path) && canHaveTrash() && QFile::moveToTrash(path)) {
        return 0;
    }
    return remove(path);
}

int FileRemoval::remove(const QString& path) {
    Descriptor content = hold(path);
    const int error = unlink(QFile::encodeName(path).constData()) == 0 ? 0 : errno;
    release(std::move(content));
    return error;
}
