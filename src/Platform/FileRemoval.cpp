#include "FileRemoval.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>
#include <system_error>
#include <thread>

namespace {

// Below this the thread costs more than the wait.
constexpr off_t worthAThread = off_t(64) * 1024 * 1024;
constexpr off_t bytesOfABlock = 512;  // of stat()

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
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        auto owned = std::make_shared<Descriptor>(std::move(content));
        std::thread([owned] { owned->close(); }).detach();
    } catch (const std::system_error&) {
        // Without a thread the space is freed here and now.
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

int FileRemoval::remove(const QString& path) {
    Descriptor content = hold(path);
    const int error = unlink(QFile::encodeName(path).constData()) == 0 ? 0 : errno;
    release(std::move(content));
    return error;
}
