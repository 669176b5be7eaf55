#include "SmallFile.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "DescriptorHolder.h"

std::optional<std::string> SmallFile::read(const std::string& path) {
    const DescriptorHolder file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file.isOpen()) {
        return std::nullopt;
    }
    std::string content;
    std::array<char, 4096> buffer;
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            return content;
        }
        content.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

int SmallFile::writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) {
            pollfd waiting{descriptor, POLLOUT, 0};
            poll(&waiting, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}
