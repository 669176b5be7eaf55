#include "SmallFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

std::optional<std::string> SmallFile::read(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) {
        return std::nullopt;
    }
    std::string content;
    std::array<char, 4096> buffer;
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            const int error = errno;
            close(descriptor);
            errno = error;
            if (count < 0) {
                return std::nullopt;
            }
            return content;
        }
        content.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

bool SmallFile::writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}
