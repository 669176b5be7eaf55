// Reads a whole file from its disk, with a thread that keeps ahead of whoever uses the bytes.
//
// next() and error() belong to one consuming thread. Dropping it early is fine; it then waits for
// the read that is under way.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <thread>

#include "BufferRing.h"
#include "UncachedFile.h"

class ReadAhead final {
public:
    // Throws std::system_error.
    explicit ReadAhead(std::unique_ptr<UncachedFile> file);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    // The bytes after those that the last call gave, valid until the next call; empty at the end.
    std::span<const std::byte> next();
    // Once next() gave nothing: why that was not the file's end, an error number, or 0.
    int error() const { return m_error; }

private:
    void read();

    std::unique_ptr<UncachedFile> m_file;
    BufferRing m_ring;
    bool m_holdsBuffer = false;
    int m_error = 0;        // the reading thread's until the ring is at its end
    std::jthread m_reader;  // last, so that it ends first
};
