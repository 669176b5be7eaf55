// A file or block device that is read with O_DIRECT: from its disk and past the page cache.
//
// Used by one thread at a time. Where the file system refuses O_DIRECT (tmpfs does), the file is
// read through the page cache, after its cached pages have been dropped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "BufferRing.h"
#include "DescriptorHolder.h"

class UncachedFile final {
public:
    // Opens the file for reading. Null on failure; errno tells why.
    static std::unique_ptr<UncachedFile> open(const std::string& path);
    // Takes over an open descriptor. The alignment is what O_DIRECT needs of it, in bytes.
    explicit UncachedFile(DescriptorHolder descriptor,
                          std::size_t alignment = BufferRing::alignment);

    int descriptor() const { return m_descriptor.get(); }

    // Reads up to the buffer's size from the offset; fewer bytes only at the file's end. 0, or the
    // number of the error. Quick when offset, buffer and size are multiples of
    // the alignment; any others work, through a copy.
    int read(std::uint64_t offset, std::span<std::byte> buffer, std::size_t* bytes);

private:
    int readAligned(std::uint64_t offset, std::span<std::byte> buffer, std::size_t* bytes);
    void useCache();

    bool isAligned(std::uint64_t offset, std::span<const std::byte> buffer) const;

    const DescriptorHolder m_descriptor;
    const std::size_t m_alignment;
    bool m_direct;
};
