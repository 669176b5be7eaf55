// Owns one file descriptor and closes it, which leaves errno as it was.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

class DescriptorHolder final {
public:
    // Takes what open() gave, also its -1.
    explicit DescriptorHolder(int descriptor) : m_descriptor(descriptor) {}
    ~DescriptorHolder() {
        if (m_descriptor >= 0) {
            const int error = errno;
            close(m_descriptor);
            errno = error;
        }
    }
    DescriptorHolder(DescriptorHolder&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    DescriptorHolder(const DescriptorHolder&) = delete;
    DescriptorHolder& operator=(const DescriptorHolder&) = delete;
    DescriptorHolder& operator=(DescriptorHolder&&) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};
