#include "ImageFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

#include "BufferRing.h"

namespace {

constexpr std::uint64_t windowBytes = 8ULL * 1024 * 1024;

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

Failure createFailure(const std::string& path, int error) {
    Failure failure = Failure::ofErrno(error, path);
    // "Permission denied" is for the disc: whoever reads it there is sent to get access to the
    // drive.
    if (error == EACCES) {
        failure.sentence = "the folder " + folderOf(path) + " may not be written to";
    } else if (error == ENOENT) {
        failure.sentence = "the folder " + folderOf(path) + " does not exist";
    }
    return failure;
}

Failure spaceFailure(const std::string& path, int error, std::uint64_t bytes) {
    Failure failure = Failure::ofErrno(error, path);
    failure.sentence += "; the image needs " + std::to_string(bytes) + " bytes";
    return failure;
}

// Tells programs that clean up that the file is needed, for as long as it is open.
void claim(int descriptor) {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    fcntl(descriptor, F_OFD_SETLK, &lock);
}

// Truncating to the size that the file has frees the blocks beyond its end.
void cutToSize(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && ftruncate(descriptor, status.st_size) != 0) {
        // The space then goes with the file; nothing better can be done.
        return;
    }
}

// The signal handler's.
std::atomic<int> signalledImage{-1};
std::atomic<bool> processEnds{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

extern "C" void keepPartialAndEnd(int signal) {
    // A write that began after the cut could leave a hole before it.
    processEnds = true;
    cutToSize(signalledImage);
    // Its default action is set again.
    raise(signal);
}

}  // namespace

Result<std::unique_ptr<ImageFile>> ImageFile::create(const std::string& path, Caching caching) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    // Until it has its place, a disc's content is for its reader alone.
    constexpr mode_t mode = S_IRUSR | S_IWUSR;
    // Created without O_DIRECT: where it is refused, an open that asks for it leaves an empty file.
    DescriptorHolder descriptor(open(path.c_str(), flags, mode));
    if (!descriptor.isOpen()) {
        return createFailure(path, errno);
    }
    claim(descriptor.get());
    const bool direct =
        caching == Caching::Avoid && fcntl(descriptor.get(), F_SETFL, O_DIRECT) == 0;
    return std::unique_ptr<ImageFile>(new ImageFile(path, std::move(descriptor), direct));
}

ImageFile::ImageFile(std::string path, DescriptorHolder descriptor, bool direct)
    : m_path(std::move(path)), m_descriptor(std::move(descriptor)), m_direct(direct) {}

Result<void> ImageFile::reserve(std::uint64_t bytes) {
    if (bytes == 0) {
        return {};
    }
    // Asked first: taking the space would fill the disk before it fails.
    struct statvfs space {};
    if (fstatvfs(m_descriptor.get(), &space) == 0 && space.f_blocks > 0) {
        const std::uint64_t blocks = geteuid() == 0 ? space.f_bfree : space.f_bavail;
        if (bytes / space.f_frsize > blocks) {
            return spaceFailure(m_path, ENOSPC, bytes);
        }
    }
    int result = 0;
    do {
        result = fallocate(m_descriptor.get(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(bytes));
    } while (result != 0 && errno == EINTR);
    if (result == 0 || (errno != ENOSPC && errno != EDQUOT && errno != EFBIG)) {
        return {};
    }
    return spaceFailure(m_path, errno, bytes);
}

int ImageFile::stopDirect() {
    m_direct = false;
    m_windowStart = m_windowEnd = m_size;
    return fcntl(m_descriptor.get(), F_SETFL, 0) == 0 ? 0 : errno;
}

int ImageFile::writeAtEnd(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        while (processEnds) {
            pause();
        }
        const ssize_t written =
            pwrite(m_descriptor.get(), bytes.data(), bytes.size(), static_cast<off_t>(m_size));
        if (written > 0) {
            m_size += static_cast<std::uint64_t>(written);
            bytes = bytes.subspan(static_cast<std::size_t>(written));
            // A short O_DIRECT write may leave an unaligned rest.
            if (m_direct && m_size % BufferRing::alignment != 0) {
                if (const int error = stopDirect()) {
                    return error;
                }
            }
        } else if (written == 0) {
            return ENOSPC;
        } else if (errno == EINVAL && m_direct) {
            if (const int error = stopDirect()) {
                return error;
            }
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int ImageFile::append(std::span<const std::byte> bytes) {
    if (m_direct) {
        const auto aligned =
            bytes.first(bytes.size() / BufferRing::alignment * BufferRing::alignment);
        if (const int error = writeAtEnd(aligned)) {
            return error;
        }
        bytes = bytes.subspan(aligned.size());
        if (!bytes.empty() && m_direct) {
            if (const int error = stopDirect()) {
                return error;
            }
        }
    }
    if (const int error = writeAtEnd(bytes)) {
        return error;
    }
    return m_direct ? 0 : writeBackWindows();
}

int ImageFile::writeBackWindows() {
    while (m_size - m_windowEnd >= windowBytes) {
        // The window before this one has had the time of a whole window to reach the disk.
        const auto start = static_cast<off_t>(m_windowStart);
        const auto length = static_cast<off_t>(m_windowEnd - m_windowStart);
        if (length > 0) {
            if (sync_file_range(m_descriptor.get(), start, length,
                                SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                    SYNC_FILE_RANGE_WAIT_AFTER) != 0 &&
                errno != ENOSYS && errno != EINVAL && errno != ESPIPE) {
                return errno;
            }
            posix_fadvise(m_descriptor.get(), start, length, POSIX_FADV_DONTNEED);
        }
        m_windowStart = m_windowEnd;
        sync_file_range(m_descriptor.get(), static_cast<off_t>(m_windowEnd),
                        static_cast<off_t>(windowBytes), SYNC_FILE_RANGE_WRITE);
        m_windowEnd += windowBytes;
    }
    return 0;
}

int ImageFile::finish() {
    int result = 0;
    do {
        result = fdatasync(m_descriptor.get());
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        return errno;
    }
    posix_fadvise(m_descriptor.get(), 0, 0, POSIX_FADV_DONTNEED);
    return 0;
}

void ImageFile::keepPartial() {
    cutToSize(m_descriptor.get());
}

void ImageFile::keepPartialOnSignals() {
    signalledImage = m_descriptor.get();
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action {};
        // A program that was started by nohup goes on.
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            action.sa_handler = keepPartialAndEnd;
            action.sa_flags = static_cast<int>(SA_RESETHAND);
            sigaction(number, &action, nullptr);
        }
    }
}

void ImageFile::remove() {
    unlink(m_path.c_str());
}
