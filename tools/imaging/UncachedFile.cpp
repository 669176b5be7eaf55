#include "UncachedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

std::unique_ptr<UncachedFile> UncachedFile::open(const std::string& path) {
    DescriptorHolder descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return descriptor.isOpen() ? std::make_unique<UncachedFile>(std::move(descriptor)) : nullptr;
}

UncachedFile::UncachedFile(DescriptorHolder descriptor, std::size_t alignment)
    : m_descriptor(std::move(descriptor)),
      m_alignment(alignment),
      m_direct(fcntl(m_descriptor.get(), F_SETFL, O_DIRECT) == 0) {
    if (!m_direct) {
        useCache();
    }
}

bool UncachedFile::isAligned(std::uint64_t offset, std::span<const std::byte> buffer) const {
    return offset % m_alignment == 0 && buffer.size() % m_alignment == 0 &&
           reinterpret_cast<std::uintptr_t>(buffer.data()) % m_alignment == 0;
}

void UncachedFile::useCache() {
    m_direct = false;
    fcntl(m_descriptor.get(), F_SETFL, 0);
    // Pages that are not on the disk yet cannot be dropped.
    fdatasync(m_descriptor.get());
    posix_fadvise(m_descriptor.get(), 0, 0, POSIX_FADV_DONTNEED);
    posix_fadvise(m_descriptor.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

int UncachedFile::readAligned(std::uint64_t offset, std::span<std::byte> buffer,
                              std::size_t* bytes) {
    *bytes = 0;
    while (*bytes < buffer.size()) {
        const auto rest = buffer.subspan(*bytes);
        const ssize_t count = pread(m_descriptor.get(), rest.data(), rest.size(),
                                    static_cast<off_t>(offset + *bytes));
        if (count > 0) {
            *bytes += static_cast<std::size_t>(count);
            // A short O_DIRECT read that ends off the alignment has reached the file's end.
            if (m_direct && static_cast<std::size_t>(count) % m_alignment != 0) {
                return 0;
            }
        } else if (count == 0) {
            return 0;
        } else if (errno == EINVAL && m_direct) {
            useCache();
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int UncachedFile::read(std::uint64_t offset, std::span<std::byte> buffer, std::size_t* bytes) {
    if (!m_direct || isAligned(offset, buffer)) {
        const int error = readAligned(offset, buffer, bytes);
        if (!m_direct && *bytes > 0) {
            posix_fadvise(m_descriptor.get(), static_cast<off_t>(offset),
                          static_cast<off_t>(*bytes), POSIX_FADV_DONTNEED);
        }
        return error;
    }
    *bytes = 0;
    const std::uint64_t start = offset / m_alignment * m_alignment;
    const auto lead = static_cast<std::size_t>(offset - start);
    const std::size_t span = (lead + buffer.size() + m_alignment - 1) / m_alignment * m_alignment;
    void* memory = nullptr;
    if (posix_memalign(&memory, BufferRing::alignment, span) != 0) {
        return ENOMEM;
    }
    const std::unique_ptr<std::byte, decltype(&std::free)> copy(static_cast<std::byte*>(memory),
                                                                &std::free);
    std::size_t filled = 0;
    if (const int error = readAligned(start, {copy.get(), span}, &filled)) {
        return error;
    }
    if (filled > lead) {
        *bytes = std::min(filled - lead, buffer.size());
        std::memcpy(buffer.data(), copy.get() + lead, *bytes);
    }
    return 0;
}
