#include "StagedCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

#include "AbandonedFiles.h"
#include "BackgroundThread.h"
#include "Descriptor.h"
#include "FileRemoval.h"
#include "UserFolders.h"
#include "WriteAll.h"

namespace {

constexpr size_t copyBlock = size_t(1024) * 1024;
// How much may wait in memory for a slow disk: bounds what the last flush has to do.
constexpr off_t flushWindow = off_t(16) * 1024 * 1024;

// Hidden from whoever looks at the folder.
AbandonedFiles::Names namesOfCopies() {
    return {QStringLiteral(".spindrift-"), QStringLiteral(".part")};
}

QString freshPathBeside(const QString& destination) {
    const auto [prefix, suffix] = namesOfCopies();
    return QFileInfo(destination).path() + QLatin1Char('/') + prefix +
           UserFolders::freshIdentifier() + suffix;
}

ssize_t readSome(int descriptor, std::vector<char>& buffer) {
    ssize_t count = 0;
    do {
        count = ::read(descriptor, buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    return count;
}

// A place that is too small says so now instead of after half an hour: a disk without the space, or
// a file system whose files cannot be as large.
int makeRoom(int output, off_t size) {
    if (lseek(output, size, SEEK_SET) < 0) {
        return EFBIG;
    }
    if (lseek(output, 0, SEEK_SET) != 0) {
        return errno;
    }
    if (fallocate(output, FALLOC_FL_KEEP_SIZE, 0, size) != 0 &&
        (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)) {
        return errno;
    }
    return 0;
}

// An image is larger than what is worth keeping in memory.
void flush(int input, int output, off_t from, off_t to) {
    sync_file_range(
        output, from, to - from,
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
    posix_fadvise(output, from, to - from, POSIX_FADV_DONTNEED);
    posix_fadvise(input, from, to - from, POSIX_FADV_DONTNEED);
}

// In one step, and never over a file that has come meanwhile. 0 or -1 with errno.
int renameToNewName(const char* from, const char* to) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return -1;
    }
    // A file system without such a rename: a second name is never made over another file.
    if (link(from, to) != 0) {
        return -1;
    }
    unlink(from);  // the file is in its place, whatever becomes of the first name
    return 0;
}

// The permissions of a file that this process makes for everybody.
mode_t usualMode() {
    QFile status(QStringLiteral("/proc/self/status"));
    mode_t mask = S_IWGRP | S_IWOTH;
    if (status.open(QIODevice::ReadOnly)) {
        const QByteArray text = status.readAll();
        const QByteArray key = "\nUmask:";
        if (const auto place = text.indexOf(key); place >= 0) {
            const auto start = place + key.size();
            mask = text.mid(start, text.indexOf('\n', start) - start).trimmed().toUInt(nullptr, 8);
        }
    }
    return (S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH) & ~mask;
}

// Until then a power cut can take a new name back. 0 or the error number. Not every folder can be
// read, nor every file system told.
int syncFolderOf(const QString& path) {
    const Descriptor folder(open(QFile::encodeName(QFileInfo(path).path()).constData(),
                                 O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        return errno == EACCES ? 0 : errno;
    }
    return fsync(folder.number()) == 0 || errno == EINVAL ? 0 : errno;
}

}  // namespace

int moveFile(const QString& source, const QString& destination, Replacing replacing) {
    const QByteArray from = QFile::encodeName(source);
    const QByteArray to = QFile::encodeName(destination);
    struct stat existing = {};
    if (lstat(to.constData(), &existing) == 0 && S_ISDIR(existing.st_mode)) {
        return EISDIR;
    }
    if (replacing == Replacing::No) {
        if (lstat(to.constData(), &existing) == 0) {
            return EEXIST;  // also from another file system, before anything is copied
        }
        if (renameToNewName(from.constData(), to.constData()) != 0) {
            return errno;
        }
        chmod(to.constData(), usualMode());
        return 0;
    }
    // What stands there may be a large image.
    Descriptor replaced = FileRemoval::hold(destination);
    if (rename(from.constData(), to.constData()) == 0) {
        FileRemoval::release(std::move(replaced));
    } else if (errno != EEXIST || unlink(to.constData()) != 0 ||
               rename(from.constData(), to.constData()) != 0) {
        // Some user-space file systems cannot replace a file in one step.
        return errno;
    }
    chmod(to.constData(), usualMode());
    return 0;
}

StagedCopy::StagedCopy(const QString& source, const QString& destination, Replacing replacing)
    : m_source(source),
      m_destination(destination),
      m_replacing(replacing),
      m_staging(freshPathBeside(destination)),
      m_removedAtExit(m_staging) {}

StagedCopy::~StagedCopy() {
    discard();
}

std::shared_ptr<StagedCopy> StagedCopy::begin(const QString& source, const QString& destination,
                                              Replacing replacing,
                                              const std::function<void()>& finished) {
    std::shared_ptr<StagedCopy> staged(new StagedCopy(source, destination, replacing));
    const int error =
        BackgroundThread::start(BackgroundThread::Priority::Normal, [staged, finished] {
            staged->m_error = staged->copy();
            finished();
        });
    if (error != 0) {
        staged->m_error = error;
        finished();
    }
    return staged;
}

void StagedCopy::cancel() {
    m_cancelled = true;
}

void StagedCopy::discard() {
    m_cancelled = true;
    FileRemoval::remove(m_staging);
}

int StagedCopy::commit() {
    int error = m_error != 0 ? m_error : moveFile(m_staging, m_destination, m_replacing);
    if (error != 0) {
        discard();
        return error;
    }
    error = syncFolderOf(m_destination);
    if (error == 0) {
        FileRemoval::remove(m_source);
    }
    return error;
}

int StagedCopy::copy() {
    AbandonedFiles::removeFrom(QFileInfo(m_destination).path(), namesOfCopies());
    const Descriptor input(open(QFile::encodeName(m_source).constData(), O_RDONLY | O_CLOEXEC));
    if (!input.isOpen()) {
        return errno;
    }
    AbandonedFiles::claim(input.number());
    int error = copyFrom(input.number());
    struct stat original = {};
    if ((error == ENOSPC || error == EDQUOT) && fstat(input.number(), &original) == 0 &&
        makesWay(original.st_size) && unlink(QFile::encodeName(m_destination).constData()) == 0) {
        error = lseek(input.number(), 0, SEEK_SET) == 0 ? copyFrom(input.number()) : errno;
    }
    return error;
}

// Whether what stands at the destination is to be replaced and leaves room for so many bytes.
bool StagedCopy::makesWay(off_t size) const {
    struct stat replaced = {};
    struct statvfs system = {};
    const QByteArray path = QFile::encodeName(m_destination);
    if (m_replacing == Replacing::No || m_cancelled || lstat(path.constData(), &replaced) != 0 ||
        !S_ISREG(replaced.st_mode) || replaced.st_nlink != 1 ||
        statvfs(path.constData(), &system) != 0) {
        return false;
    }
    constexpr off_t bytesOfStatBlock = 512;
    return static_cast<off_t>(system.f_bavail * system.f_frsize) +
               replaced.st_blocks * bytesOfStatBlock >=
           size;
}

int StagedCopy::copyFrom(int input) {
    const QByteArray staging = QFile::encodeName(m_staging);
    const Descriptor output(
        open(staging.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!output.isOpen()) {
        return errno;
    }
    AbandonedFiles::claim(output.number());
    const int error = copyContent(input, output.number());
    if (error != 0) {
        unlink(staging.constData());
    }
    return error;
}

int StagedCopy::copyContent(int input, int output) {
    struct stat original = {};
    if (fstat(input, &original) != 0) {
        return errno;
    }
    if (const int error = makeRoom(output, original.st_size); error != 0) {
        return error;
    }
    std::vector<char> buffer(copyBlock);
    off_t position = 0;
    off_t flushed = 0;
    while (true) {
        const ssize_t count = readSome(input, buffer);
        if (m_cancelled) {
            return ECANCELED;
        }
        if (count < 0 || (count > 0 && !writeAll(output, {buffer.data(), count}))) {
            return errno;
        }
        if (count == 0) {
            break;
        }
        position += count;
        m_fraction =
            std::min(1.0, static_cast<double>(position) / static_cast<double>(original.st_size));
        if (position - flushed >= flushWindow) {
            flush(input, output, flushed, position);
            flushed = position;
        }
    }
    if (fsync(output) != 0) {
        return errno;
    }
    // Somebody else may have cut the original off, or written to the copy.
    struct stat written = {};
    if (fstat(output, &written) != 0) {
        return errno;
    }
    return position >= original.st_size && written.st_size == position ? 0 : EIO;
}
