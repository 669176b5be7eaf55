#include "PacedDrive.h"

#include <algorithm>
#include <utility>

namespace {
constexpr std::uint64_t sectorSize = 2048;
}

PacedDrive::PacedDrive(PacedDriveOptions options) : m_options(std::move(options)) {
    std::sort(m_options.badSectors.begin(), m_options.badSectors.end());
}

std::optional<std::uint64_t> PacedDrive::firstBadByte(std::uint64_t offset,
                                                      std::uint64_t size) const {
    const auto bad = std::lower_bound(m_options.badSectors.begin(), m_options.badSectors.end(),
                                      offset / sectorSize);
    if (bad == m_options.badSectors.end() || *bad * sectorSize >= offset + size) {
        return std::nullopt;
    }
    return *bad * sectorSize;
}

PacedDrive::Answer PacedDrive::read(std::uint64_t offset, std::uint64_t size, double now) {
    const std::uint64_t end = offset + size;
    if (offset != m_wanted) {
        m_head = offset;
        m_headTime = now;
    } else if (m_options.bytesPerSecond > 0) {
        // What the drive has read ahead since the last command, as far as its memory goes.
        const double ahead = std::max(0.0, now - m_headTime) * m_options.bytesPerSecond;
        const std::uint64_t limit = m_wanted + m_options.readAheadBytes;
        const std::uint64_t reached = m_head + static_cast<std::uint64_t>(ahead);
        m_head = std::max(m_head, std::min(limit, reached));
        m_headTime = std::max(now, m_headTime);
    }
    const auto bad = firstBadByte(offset, size);
    const std::uint64_t upTo = bad.value_or(end);
    double readyAt = std::max(now, m_headTime);
    if (m_options.bytesPerSecond > 0 && upTo > m_head) {
        readyAt += static_cast<double>(upTo - m_head) / m_options.bytesPerSecond;
    }
    if (bad) {
        // A failing command loses the drive's place.
        m_wanted = end;
        m_head = end;
        m_headTime = readyAt + m_options.secondsPerFailure;
        return {m_headTime, true};
    }
    m_head = std::max(m_head, end);
    m_headTime = readyAt;
    m_wanted = end;
    return {readyAt, false};
}
