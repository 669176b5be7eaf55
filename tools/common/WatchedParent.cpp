#include "WatchedParent.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

namespace {

std::optional<pid_t> namedProcess() {
    const char* text = std::getenv(WatchedParent::environmentVariable);
    if (text == nullptr || *text == '\0') {
        return std::nullopt;
    }
    return static_cast<pid_t>(std::strtol(text, nullptr, 10));
}

}  // namespace

WatchedParent::WatchedParent()
    : m_process(namedProcess()),
      m_descriptor(m_process ? static_cast<int>(syscall(SYS_pidfd_open, *m_process, 0)) : -1) {}

bool WatchedParent::isGone() const {
    return m_process && getppid() != *m_process;
}

void WatchedParent::waitUntilGone() const {
    // Only now, with the process held, is its number known to be still its own.
    while (!isGone()) {
        pollfd end{m_descriptor.get(), POLLIN, 0};
        poll(&end, 1, -1);
    }
}
