#include "WriteAll.h"

#include <unistd.h>

#include <cerrno>

bool writeAll(int descriptor, QByteArrayView content) {
    while (!content.isEmpty()) {
        const ssize_t written =
            ::write(descriptor, content.data(), static_cast<size_t>(content.size()));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        content = content.sliced(written);
    }
    return true;
}
