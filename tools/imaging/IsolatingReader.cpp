#include "IsolatingReader.h"

#include <algorithm>
#include <cerrno>
#include <vector>

namespace {

constexpr int singleSectorAttempts = 2;
constexpr std::size_t smallPiece = 64UL * 1024;  // bytes

using ReadFailure = IsolatingReader::ReadFailure;

// Absent while the medium is the one that was opened.
std::optional<ReadFailure> failureOf(Medium::State state, int error = 0) {
    switch (state) {
        case Medium::State::Same:
            return std::nullopt;
        case Medium::State::Changed:
            return ReadFailure{ReadFailure::Kind::Changed, 0, error};
        case Medium::State::Unsure:
            return ReadFailure{ReadFailure::Kind::Unsure, 0, error};
        case Medium::State::Removed:
            break;
    }
    return ReadFailure{ReadFailure::Kind::Removed, 0, error};
}

}  // namespace

std::optional<IsolatingReader::ReadFailure> IsolatingReader::discIsGone(int error) {
    if (const auto failure = failureOf(m_medium->confirmedState(), error)) {
        return failure;
    }
    const bool isGone = error == ENOMEDIUM || error == ENODEV || error == ENXIO;
    return isGone ? failureOf(Medium::State::Removed, error) : std::nullopt;
}

std::optional<IsolatingReader::ReadFailure> IsolatingReader::readOneSector(
    std::uint64_t offset, std::span<std::byte> buffer) {
    int error = 0;
    for (int attempt = 0; attempt < singleSectorAttempts; ++attempt) {
        error = m_medium->read(offset, buffer);
        if (error == 0) {
            m_pastTheBadSector = m_pastTheBadSector || attempt > 0;
            return std::nullopt;
        }
        m_pastTheBadSector = true;
        if (const auto gone = discIsGone(error)) {
            return gone;
        }
    }
    return ReadFailure{ReadFailure::Kind::Unreadable, offset / m_medium->sectorBytes(), error};
}

std::optional<IsolatingReader::ReadFailure> IsolatingReader::readSectors(
    std::uint64_t offset, std::span<std::byte> buffer, std::size_t& good) {
    const std::size_t sector = m_medium->sectorBytes();
    good = 0;
    while (good < buffer.size()) {
        const auto piece = buffer.subspan(good, std::min(sector, buffer.size() - good));
        if (auto failure = readOneSector(offset + good, piece)) {
            return failure;
        }
        good += piece.size();
        if (m_pastTheBadSector && good < buffer.size()) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

IsolatingReader::ReadResult IsolatingReader::read(std::uint64_t offset,
                                                  std::span<std::byte> buffer) {
    if (const auto failure = failureOf(m_medium->state())) {
        return {0, failure};
    }
    int error = m_medium->read(offset, buffer);
    if (error == 0) {
        return {buffer.size(), std::nullopt};
    }
    if (const auto gone = discIsGone(error)) {
        return {0, gone};
    }
    const std::size_t sector = m_medium->sectorBytes();
    const std::size_t smallBytes = std::max<std::size_t>(smallPiece / sector, 1) * sector;
    m_pastTheBadSector = false;
    std::size_t done = 0;
    while (done < buffer.size()) {
        std::size_t good = 0;
        if (auto failure = readSectors(offset + done, buffer.subspan(done), good)) {
            return {done + good, failure};
        }
        done += good;
        // The bad sector is behind: small pieces are quick and cost one failing command at most.
        while (done < buffer.size()) {
            const auto piece = buffer.subspan(done, std::min(smallBytes, buffer.size() - done));
            error = m_medium->read(offset + done, piece);
            if (error != 0) {
                break;
            }
            done += piece.size();
        }
        if (done < buffer.size()) {
            if (const auto gone = discIsGone(error)) {
                return {done, gone};
            }
            m_pastTheBadSector = false;
        }
    }
    return {done, std::nullopt};
}

bool IsolatingReader::isReadable(std::uint64_t sector) {
    const std::uint64_t offset = sector * m_medium->sectorBytes();
    if (offset >= m_medium->capacity()) {
        return false;
    }
    std::vector<std::byte> buffer(static_cast<std::size_t>(
        std::min<std::uint64_t>(m_medium->sectorBytes(), m_medium->capacity() - offset)));
    return m_medium->read(offset, buffer) == 0;
}
