#include "PuppetStrings.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

#include "SmallFile.h"

void PuppetStrings::done(std::uint64_t bytes, std::uint64_t of) {
    const double percent =
        of == 0 ? 100.0 : 100.0 * static_cast<double>(bytes) / static_cast<double>(of);
    std::array<char, 32> line{};
    std::snprintf(line.data(), line.size(), "PERCENT:%.6f\n", std::min(percent, 100.0));
    print(line.data());
}

void PuppetStrings::print(const std::string& line) {
    if (!m_descriptor || m_gone || line == m_last) {
        return;
    }
    m_last = line;
    const int error = SmallFile::writeAll(*m_descriptor, line);
    m_gone = error == EPIPE || error == EIO;
}

bool PuppetStrings::readerIsGone() {
    if (!m_descriptor || m_gone) {
        return m_gone;
    }
    pollfd output{*m_descriptor, 0, 0};
    if (poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0) {
        m_gone = true;
    }
    return m_gone;
}
