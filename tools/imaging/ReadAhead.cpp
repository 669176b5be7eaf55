#include "ReadAhead.h"

#include <cstdint>

namespace {

constexpr std::size_t buffers = 4;
constexpr std::size_t bufferBytes = 1024UL * 1024;

}  // namespace

ReadAhead::ReadAhead(std::unique_ptr<UncachedFile> file)
    : m_file(std::move(file)), m_ring(buffers, bufferBytes), m_reader([this] { read(); }) {}

ReadAhead::~ReadAhead() {
    m_ring.close();
}

void ReadAhead::read() {
    std::uint64_t offset = 0;
    for (auto buffer = m_ring.acquire(); !buffer.empty(); buffer = m_ring.acquire()) {
        std::size_t bytes = 0;
        m_error = m_file->read(offset, buffer, &bytes);
        if (m_error != 0 || bytes == 0) {
            break;
        }
        offset += bytes;
        m_ring.push(bytes);
        if (bytes < buffer.size()) {
            break;
        }
    }
    m_ring.finish();
}

std::span<const std::byte> ReadAhead::next() {
    if (m_holdsBuffer) {
        m_ring.release();
    }
    const auto bytes = m_ring.next();
    m_holdsBuffer = !bytes.empty();
    return bytes;
}
