#include "ImagingJob.h"

#include <sysexits.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "Copier.h"
#include "ImageFile.h"
#include "OpenMedium.h"
#include "PuppetStrings.h"
#include "SmallFile.h"

namespace {

// The work of another thread, and waiting for it with a limit.
template <typename Value>
class Background final {
public:
    template <typename Work>
    explicit Background(Work work)
        : m_thread([this, work = std::move(work)] {
              std::optional<Value> value;
              std::exception_ptr problem;
              try {
                  value = work();
              } catch (...) {
                  problem = std::current_exception();
              }
              const std::lock_guard lock(m_lock);
              m_value = std::move(value);
              m_problem = problem;
              m_isDone = true;
              m_done.notify_one();
          }) {}

    bool isDoneWithin(std::chrono::milliseconds time) {
        std::unique_lock lock(m_lock);
        return m_done.wait_for(lock, time, [this] { return m_isDone; });
    }
    // Once it is done; throws what the work threw.
    Value take() {
        const std::lock_guard lock(m_lock);
        if (m_problem) {
            std::rethrow_exception(m_problem);
        }
        return std::move(*m_value);
    }

private:
    std::mutex m_lock;
    std::condition_variable m_done;
    bool m_isDone = false;
    std::optional<Value> m_value;
    std::exception_ptr m_problem;
    std::jthread m_thread;  // last, so that it ends first
};

// Ends without waiting for threads: one of them may hang in the drive.
[[noreturn]] void leave(int status) {
    _exit(status);
}

std::string reasonOf(const CopyResult& result, const CreateCommand& command) {
    const auto& device = command.device;
    switch (result.kind) {
        case CopyResult::Kind::Unreadable:
            // The kernel's word for a bad spot means something else to people.
            return "sector " + std::to_string(result.sector) + " of " + device +
                   (result.error == ENODATA
                        ? " is unreadable"
                        : std::string(" cannot be read: ") + std::strerror(result.error));
        case CopyResult::Kind::Changed:
            return "the disc in " + device + " was changed while it was read";
        case CopyResult::Kind::Unsure:
            return "the drive " + device +
                   " was reset while the disc was read, and nothing tells whether it is the same";
        case CopyResult::Kind::Removed:
            return "the disc in " + device + " was removed while it was read";
        case CopyResult::Kind::WriteFailed:
            return command.image + ": " + std::strerror(result.error);
        case CopyResult::Kind::Copied:
        case CopyResult::Kind::Stopped:
            break;
    }
    return "the copy was stopped";
}

}  // namespace

int ImagingJob::fail(const std::string& reason) const {
    SmallFile::writeAll(STDERR_FILENO, "hdiutil: create failed - " + reason + "\n");
    return EXIT_FAILURE;
}

int ImagingJob::run() {
    try {
        return imageDisc();
    } catch (const std::exception& problem) {
        return fail(problem.what());
    }
}

int ImagingJob::imageDisc() {
    PuppetStrings lines(m_command.progress ? std::optional(STDOUT_FILENO) : std::nullopt);
    lines.unknown();

    Background<Result<std::unique_ptr<Medium>>> opening(
        [device = m_command.device] { return openMedium(device); });
    while (!opening.isDoneWithin(PuppetStrings::interval)) {
        if (lines.readerIsGone() || m_parent.isGone()) {
            leave(EXIT_FAILURE);
        }
    }
    const auto opened = opening.take();
    if (!opened) {
        fail(opened.failure().sentence);
        return opened.failure().kind == Failure::Kind::Busy ? EX_TEMPFAIL : EXIT_FAILURE;
    }
    const auto& medium = *opened;

    if (m_parent.isGone()) {
        return fail("the program that started it has ended");
    }
    const auto created = ImageFile::create(m_command.image);
    if (!created) {
        return fail(created.failure().sentence);
    }
    const auto& image = *created;
    image->keepPartialOnSignals();
    const std::uint64_t bytes = medium->capacity();
    if (const auto reserved = image->reserve(bytes); !reserved) {
        image->remove();
        return fail(reserved.failure().sentence);
    }

    Copier copier(*medium, *image);
    Background<CopyResult> copying([&copier] { return copier.run(); });
    bool done = false;
    while (!done) {
        done = copying.isDoneWithin(PuppetStrings::interval);
        lines.done(copier.bytesWritten(), bytes);
        if (lines.readerIsGone() || m_parent.isGone()) {
            image->remove();
            leave(EXIT_FAILURE);
        }
    }
    const CopyResult result = copying.take();
    if (result.kind != CopyResult::Kind::Copied) {
        image->keepPartial();
        return fail(reasonOf(result, m_command));
    }
    if (const auto remark = medium->remark(); !remark.empty()) {
        SmallFile::writeAll(STDERR_FILENO, "hdiutil: " + remark + "\n");
    }
    if (result.sectorsLeftOut > 0) {
        const std::uint64_t first = medium->firstSector() + result.bytes / medium->sectorBytes();
        SmallFile::writeAll(STDERR_FILENO,
                            "hdiutil: left out the last " + std::to_string(result.sectorsLeftOut) +
                                " sectors, from sector " + std::to_string(first) +
                                ": no drive reads them, and the file system ends before them\n");
    }
    if (result.fileSystemSectors) {
        SmallFile::writeAll(STDERR_FILENO, "hdiutil: the file system claims " +
                                               std::to_string(*result.fileSystemSectors) +
                                               " sectors, but the disc has only " +
                                               std::to_string(bytes / medium->sectorBytes()) +
                                               "\n");
    }
    // Nobody needs to read it, but what was asked for has a place to go.
    const int error = SmallFile::writeAll(STDOUT_FILENO, "created: " + m_command.image + "\n");
    if (error != 0 && error != EPIPE) {
        return fail("standard output: " + std::string(std::strerror(error)));
    }
    return EXIT_SUCCESS;
}
