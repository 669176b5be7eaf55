// A ring of aligned buffers between one producing and one consuming thread.
//
// The producer fills the buffer that acquire() gives and hands it over with push(); the consumer
// takes it with next() and gives it back with release(). Either side may close the ring at any
// time; the producer's finish() lets the consumer take what was pushed before.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

class BufferRing final {
public:
    static constexpr std::size_t alignment = 4096;  // bytes; what O_DIRECT needs

    // Throws std::system_error. bufferBytes is a multiple of the alignment.
    BufferRing(std::size_t buffers, std::size_t bufferBytes);
    ~BufferRing();
    BufferRing(const BufferRing&) = delete;
    BufferRing& operator=(const BufferRing&) = delete;

    std::size_t bufferBytes() const { return m_bufferBytes; }

    // Producer: waits for an empty buffer; empty span when the ring was closed.
    std::span<std::byte> acquire();
    // Producer: hands over the first `bytes` of the buffer that acquire() gave last.
    void push(std::size_t bytes);
    // Producer: nothing more will come.
    void finish();

    // Consumer: waits for a filled buffer; empty span when there is none any more.
    std::span<const std::byte> next();
    // Consumer: gives back the buffer that next() gave last.
    void release();

    // Either side: wakes the other one; whatever is still in the ring is dropped.
    void close();

private:
    std::byte* buffer(std::uint64_t index) const;

    const std::size_t m_buffers;
    const std::size_t m_bufferBytes;
    std::byte* m_memory;
    std::vector<std::size_t> m_filled;  // bytes in each buffer

    std::mutex m_lock;  // guards all below
    std::condition_variable m_moved;
    std::uint64_t m_pushed = 0;
    std::uint64_t m_released = 0;
    bool m_finished = false;
    bool m_closed = false;
};
