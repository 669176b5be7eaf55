#include "BufferRing.h"

#include <sys/mman.h>

#include <cerrno>
#include <system_error>

BufferRing::BufferRing(std::size_t buffers, std::size_t bufferBytes)
    : m_buffers(buffers), m_bufferBytes(bufferBytes), m_filled(buffers) {
    void* memory = mmap(nullptr, buffers * bufferBytes, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::system_error(errno, std::generic_category());
    }
    m_memory = static_cast<std::byte*>(memory);
}

BufferRing::~BufferRing() {
    munmap(m_memory, m_buffers * m_bufferBytes);
}

std::byte* BufferRing::buffer(std::uint64_t index) const {
    return m_memory + static_cast<std::size_t>(index % m_buffers) * m_bufferBytes;
}

std::span<std::byte> BufferRing::acquire() {
    std::unique_lock lock(m_lock);
    m_moved.wait(lock, [this] { return m_closed || m_pushed - m_released < m_buffers; });
    if (m_closed) {
        return {};
    }
    return {buffer(m_pushed), m_bufferBytes};
}

void BufferRing::push(std::size_t bytes) {
    {
        const std::lock_guard lock(m_lock);
        m_filled[static_cast<std::size_t>(m_pushed % m_buffers)] = bytes;
        ++m_pushed;
    }
    m_moved.notify_one();
}

void BufferRing::finish() {
    {
        const std::lock_guard lock(m_lock);
        m_finished = true;
    }
    m_moved.notify_one();
}

std::span<const std::byte> BufferRing::next() {
    std::unique_lock lock(m_lock);
    m_moved.wait(lock, [this] { return m_closed || m_finished || m_pushed > m_released; });
    if (m_closed || m_pushed == m_released) {
        return {};
    }
    return {buffer(m_released), m_filled[static_cast<std::size_t>(m_released % m_buffers)]};
}

void BufferRing::release() {
    {
        const std::lock_guard lock(m_lock);
        ++m_released;
    }
    m_moved.notify_one();
}

void BufferRing::close() {
    {
        const std::lock_guard lock(m_lock);
        m_closed = true;
    }
    m_moved.notify_all();
}
