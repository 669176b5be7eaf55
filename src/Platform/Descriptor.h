// A file descriptor that closes itself. Movable value; -1 while it holds none.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <utility>

class Descriptor final {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            close();
            m_number = std::exchange(other.m_number, -1);
        }
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    // Whether this many more can be had now, so that a library that aborts without one is not
    // begun; errno tells why not.
    static bool areFree(size_t count);

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }
    void close() {
        if (m_number >= 0) {
            ::close(std::exchange(m_number, -1));
        }
    }

private:
    int m_number = -1;
};
