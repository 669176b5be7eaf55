// A medium and an image in memory whose reads and writes fail as a test wants; no Qt.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "ImageSink.h"
#include "Medium.h"

class FaultyMedium final : public Medium {
public:
    static constexpr int always = std::numeric_limits<int>::max();

    struct Command {
        std::uint64_t sector = 0;
        std::uint64_t count = 0;
        bool failed = false;
        bool operator==(const Command&) const = default;
    };

    explicit FaultyMedium(std::string content, std::uint32_t sectorBytes = 2048)
        : bytes(std::move(content)), m_sectorBytes(sectorBytes) {}

    // Public, so that a test sets what it needs.
    std::string bytes;
    std::map<std::uint64_t, int> failuresLeft;  // of each bad sector
    std::uint64_t failingRead = 0;              // this read fails, counted from 1; 0: none
    // Reads of several sectors that end beyond this sector fail.
    std::uint64_t largeReadsEndAt = std::numeric_limits<std::uint64_t>::max();
    int error = EIO;
    State now = State::Same;
    State confirmed = State::Same;
    std::uint64_t first = 0;
    std::function<void()> beforeRead;
    std::vector<Command> commands;

    std::vector<Command> failed() const {
        std::vector<Command> result;
        for (const auto& command : commands) {
            if (command.failed) {
                result.push_back(command);
            }
        }
        return result;
    }

    std::uint32_t sectorBytes() const override { return m_sectorBytes; }
    std::uint64_t capacity() const override { return bytes.size(); }
    std::uint64_t firstSector() const override { return first; }
    State state() override { return now; }
    State confirmedState() override { return now != State::Same ? now : confirmed; }

    int read(std::uint64_t offset, std::span<std::byte> buffer) override {
        if (beforeRead) {
            beforeRead();
        }
        const std::uint64_t sector = offset / m_sectorBytes;
        const std::uint64_t count = (buffer.size() + m_sectorBytes - 1) / m_sectorBytes;
        bool fails = commands.size() + 1 == failingRead;
        fails = fails || (count > 1 && sector + count > largeReadsEndAt);
        for (auto& [bad, left] : failuresLeft) {
            if (bad >= sector && bad < sector + count && left > 0) {
                left -= left == always ? 0 : 1;
                fails = true;
            }
        }
        commands.push_back({sector, count, fails});
        if (fails) {
            // What a drive leaves in the buffer of a failed read is not data.
            std::memset(buffer.data(), 0xEE, buffer.size());
            return error;
        }
        if (offset % m_sectorBytes != 0 || offset + buffer.size() > bytes.size()) {
            return EINVAL;
        }
        std::memcpy(buffer.data(), bytes.data() + offset, buffer.size());
        return 0;
    }

private:
    std::uint32_t m_sectorBytes;
};

class FaultySink final : public ImageSink {
public:
    std::string bytes;
    std::uint64_t failingAppend = 0;  // counted from 1; 0: none
    bool finishFails = false;
    bool finished = false;
    std::uint64_t appends = 0;

    int append(std::span<const std::byte> data) override {
        if (++appends == failingAppend) {
            return ENOSPC;
        }
        bytes.append(reinterpret_cast<const char*>(data.data()), data.size());
        return 0;
    }

    int finish() override {
        finished = true;
        return finishFails ? EIO : 0;
    }
};
