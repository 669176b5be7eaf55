// The model of a drive that delivers its bytes at a steady pace, and fails on some sectors.
//
// A plain value without a clock of its own: the caller says what time it is and sleeps as told. Not
// thread-safe; a drive serves one command at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

struct PacedDriveOptions {
    double bytesPerSecond = 0;              // 0: as fast as it goes
    std::uint64_t readAheadBytes = 0;       // how far the drive reads on by itself between commands
    std::vector<std::uint64_t> badSectors;  // numbers of 2048-byte sectors that cannot be read
    double secondsPerFailure = 0;           // how long a failing command takes
};

class PacedDrive final {
public:
    explicit PacedDrive(PacedDriveOptions options);

    struct Answer {
        double readyAt = 0;  // seconds, on the caller's clock
        bool failed = false;
    };

    // One read command of this many bytes (not 0) at this offset, given at the time now.
    Answer read(std::uint64_t offset, std::uint64_t size, double now);

private:
    std::optional<std::uint64_t> firstBadByte(std::uint64_t offset, std::uint64_t size) const;

    PacedDriveOptions m_options;
    std::uint64_t m_wanted = 0;  // where the next sequential command would begin
    std::uint64_t m_head = 0;    // up to here the drive has read...
    double m_headTime = 0;       // ...at this time
};
