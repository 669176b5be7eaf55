#include "Copier.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <numeric>
#include <thread>

#include "BufferRing.h"
#include "IsolatingReader.h"
#include "Mmc.h"
#include "RecordedEnd.h"

namespace {

constexpr std::size_t ringBuffers = 6;
constexpr std::size_t largestRead = 1024UL * 1024;  // bytes
constexpr std::size_t smallestRead = 128UL * 1024;

// How much to read at once: as much as a fast drive needs, and on a slow one little enough for the
// image to grow steadily in the eyes of whoever watches it.
class ReadSize final {
public:
    explicit ReadSize(std::size_t sectorBytes)
        : m_unit(std::lcm(sectorBytes, BufferRing::alignment)),
          m_largest(std::max(largestRead / m_unit, std::size_t{1}) * m_unit),
          m_bytes(m_largest) {}

    std::size_t largest() const { return m_largest; }
    std::size_t bytes() const { return m_bytes; }

    void readTook(std::chrono::steady_clock::duration time) {
        using std::chrono::milliseconds;
        if (time > milliseconds(250)) {
            const std::size_t half = std::max(m_bytes / 2, smallestRead) / m_unit * m_unit;
            m_bytes = std::clamp(half, m_unit, m_largest);
        } else if (time < milliseconds(60)) {
            m_bytes = std::min(m_bytes * 2, m_largest);
        }
    }

private:
    std::size_t m_unit;
    std::size_t m_largest;
    std::size_t m_bytes;
};

}  // namespace

// One copy: what run() needs while it runs.
class Copier::Run final {
public:
    explicit Run(Copier& copier)
        : m_copier(copier),
          m_medium(copier.m_medium),
          m_reader(copier.m_medium),
          m_readSize(copier.m_medium.sectorBytes()),
          m_ring(ringBuffers, m_readSize.largest()) {}

    CopyResult operator()() {
        std::thread writer([this] { write(); });
        read();
        if (m_result.kind == CopyResult::Kind::Stopped) {
            m_ring.close();
        } else {
            m_ring.finish();
        }
        writer.join();
        if (m_result.kind == CopyResult::Kind::Copied && m_writeError == 0) {
            confirm();
        }
        if (m_result.kind == CopyResult::Kind::Copied && m_writeError == 0) {
            m_writeError = m_copier.m_sink.finish();
        }
        if (m_result.kind == CopyResult::Kind::Copied && m_writeError != 0) {
            m_result.kind = CopyResult::Kind::WriteFailed;
            m_result.error = m_writeError;
        }
        m_result.bytes = m_copier.bytesWritten();
        return m_result;
    }

private:
    void write() {
        for (auto bytes = m_ring.next(); !bytes.empty(); bytes = m_ring.next()) {
            m_writeError = m_copier.m_sink.append(bytes);
            if (m_writeError != 0) {
                m_ring.close();
                return;
            }
            m_copier.m_written.fetch_add(bytes.size(), std::memory_order_relaxed);
            m_ring.release();
        }
    }

    void read() {
        const std::uint64_t end = m_medium.capacity();
        for (std::uint64_t offset = 0; offset < end;) {
            const auto buffer = m_ring.acquire();
            if (buffer.empty()) {
                return;
            }
            if (m_copier.m_stopped.load()) {
                m_result.kind = CopyResult::Kind::Stopped;
                return;
            }
            const auto want = buffer.first(static_cast<std::size_t>(
                std::min<std::uint64_t>(m_readSize.bytes(), end - offset)));
            const auto before = std::chrono::steady_clock::now();
            const auto got = m_reader.read(offset, want);
            m_readSize.readTook(std::chrono::steady_clock::now() - before);
            if (offset == 0) {
                compareSizes(want.first(got.bytes));
            }
            if (got.bytes > 0) {
                m_ring.push(got.bytes);
            }
            offset += got.bytes;
            if (got.failure) {
                fail(*got.failure);
                return;
            }
        }
    }

    void fail(const IsolatingReader::ReadFailure& failure) {
        using Kind = IsolatingReader::ReadFailure::Kind;
        m_result.error = failure.error;
        if (failure.kind == Kind::Changed) {
            m_result.kind = CopyResult::Kind::Changed;
        } else if (failure.kind == Kind::Unsure) {
            m_result.kind = CopyResult::Kind::Unsure;
        } else if (failure.kind == Kind::Removed) {
            m_result.kind = CopyResult::Kind::Removed;
        } else if (isRunOut(failure.sector)) {
            m_result.error = 0;
            m_result.sectorsLeftOut = sectors() - failure.sector;
        } else {
            m_result.kind = CopyResult::Kind::Unreadable;
            m_result.sector = m_medium.firstSector() + failure.sector;
        }
    }

    std::uint64_t sectors() const {
        const std::uint64_t bytes = m_medium.sectorBytes();
        return (m_medium.capacity() + bytes - 1) / bytes;
    }

    // Whether this unreadable sector begins what the capacity counts though nothing is recorded
    // there. Without a file system that says so it may just as well be data.
    bool isRunOut(std::uint64_t sector) {
        if (sector + m_medium.runOutSectors() < sectors() ||
            m_medium.sectorBytes() != Mmc::dataSectorBytes) {
            return false;
        }
        if (sector + 1 < sectors() && m_reader.isReadable(sectors() - 1)) {
            return false;
        }
        auto end = recordedEnd(
            [this, sector](std::uint64_t at, std::span<std::byte> buffer) {
                return at < sector && m_medium.read(at * buffer.size(), buffer) == 0;
            },
            sectors());
        // Some programs count a later track's file system from the track, some from the disc. An
        // end that fits the track is never taken for the disc's: too late an end only costs the
        // run-out, too early a one would cost data.
        if (end && *end > sectors() && *end >= m_medium.firstSector()) {
            *end -= m_medium.firstSector();
        }
        return end && *end <= sector;
    }

    // Notes a file system that claims more than the medium has; looks at the disc's beginning only,
    // which is at hand.
    void compareSizes(std::span<const std::byte> beginning) {
        if (m_medium.sectorBytes() != Mmc::dataSectorBytes || m_medium.firstSector() != 0) {
            return;
        }
        const auto end = recordedEnd(
            [beginning](std::uint64_t at, std::span<std::byte> buffer) {
                if (at >= beginning.size() / buffer.size()) {
                    return false;
                }
                std::memcpy(buffer.data(), beginning.data() + at * buffer.size(), buffer.size());
                return true;
            },
            sectors());
        if (end && *end > sectors()) {
            m_result.fileSystemSectors = end;
        }
    }

    // A disc that was swapped without any read failing must not become a mixed image.
    void confirm() {
        const auto state = m_medium.confirmedState();
        if (state == Medium::State::Changed) {
            m_result.kind = CopyResult::Kind::Changed;
        } else if (state == Medium::State::Unsure) {
            m_result.kind = CopyResult::Kind::Unsure;
        } else if (state == Medium::State::Removed) {
            m_result.kind = CopyResult::Kind::Removed;
        }
    }

    Copier& m_copier;
    Medium& m_medium;
    IsolatingReader m_reader;
    ReadSize m_readSize;
    BufferRing m_ring;
    CopyResult m_result;   // the reading thread's
    int m_writeError = 0;  // the writing thread's until it is joined
};

Copier::Copier(Medium& medium, ImageSink& sink) : m_medium(medium), m_sink(sink) {}

CopyResult Copier::run() {
    return Run(*this)();
}

void Copier::stop() {
    m_stopped.store(true);
}
