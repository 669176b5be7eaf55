// Copies a medium to an image: one thread reads ahead, another one writes, so that both the drive
// and the disk are always busy.
//
// run() blocks and is called once, from any thread; it reads on that thread and starts the writer.
// progress() and stop() may be called from other threads at any time. The medium and the sink are
// borrowed for run().
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "ImageSink.h"
#include "Medium.h"

struct CopyResult {
    enum class Kind {
        Copied,       // the image is complete and on the disk
        Unreadable,   // a sector cannot be read
        Changed,      // another disc is in the drive
        Unsure,       // the drive was reset, and may have another disc
        Removed,      // the disc or the drive is gone
        WriteFailed,  // the image cannot be written
        Stopped,      // stop() was called
    };
    Kind kind = Kind::Copied;
    std::uint64_t bytes = 0;   // written to the image
    std::uint64_t sector = 0;  // the unreadable one, as the drive counts; for Unreadable
    int error = 0;             // the error number; for Unreadable, Removed and WriteFailed
    // Sectors at the end that no drive reads and that the file system does not use.
    std::uint64_t sectorsLeftOut = 0;
    // The sectors that the file system says it has, when that is more than the medium has.
    std::optional<std::uint64_t> fileSystemSectors;
};

class Copier final {
public:
    Copier(Medium& medium, ImageSink& sink);

    CopyResult run();

    // Bytes written so far.
    std::uint64_t bytesWritten() const { return m_written.load(std::memory_order_relaxed); }
    // Ends run() after the commands that are under way.
    void stop();

private:
    class Run;

    Medium& m_medium;
    ImageSink& m_sink;
    std::atomic<std::uint64_t> m_written{0};
    std::atomic<bool> m_stopped{false};
};
