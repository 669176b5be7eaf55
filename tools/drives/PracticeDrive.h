// The practice drive: a folder that the disc tools treat as an optical drive, so that everything
// works with no hardware.
//
// The folder holds "disc.iso" (the disc in the tray: an image file or a symbolic link to one;
// absent: the tray is empty) and "drive.json" (what the drive is and how it misbehaves; absent: a
// good drive). Sectors are 2048 bytes, or 2352 when the disc is an audio disc.
//
// A plain value, read afresh by each tool. Keys that drive.json has and this version does not know
// are ignored, so that one folder serves several versions; a known key with a wrong type or an
// impossible value is an error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Mmc.h"
#include "Result.h"

struct PracticeFault {
    enum class Kind {
        Unreadable,  // every read fails
        Flaky,       // a read fails `times` times in one imaging run, then is good
        Hang,        // every read takes `seconds` longer
        Changed,     // every second imaging run of the same disc gets other bytes
    };
    std::uint64_t lba = 0;    // the first sector
    std::uint64_t count = 1;  // sectors, at least one
    Kind kind = Kind::Unreadable;
    std::uint64_t times = 1;
    double seconds = 1;

    bool operator==(const PracticeFault&) const = default;
};

struct PracticeDisc {
    std::string path;         // the image in the tray
    std::uint64_t bytes = 0;  // its size
    std::string type;         // such as "DVD-ROM"
    bool audio = false;       // audio tracks only: 2352-byte sectors
    // The name that drive.json gives; absent: read it from the image.
    std::optional<std::string> volumeName;

    std::uint32_t sectorBytes() const {
        return audio ? Mmc::audioSectorBytes : Mmc::dataSectorBytes;
    }
    bool operator==(const PracticeDisc&) const = default;
};

struct PracticeDrive {
    static constexpr const char* environmentVariable = "SPINDRIFT_PRACTICE_DRIVE";
    static constexpr const char* deviceNode = "/dev/practice0";
    static constexpr const char* discFile = "disc.iso";
    static constexpr const char* ejectedFile = "ejected.iso";  // disc.iso's name after an eject
    // What a program that reads the disc locks, in place of a device.
    static constexpr const char* lockFile = ".lock";

    std::string folder;  // without a slash at its end
    std::string vendor = "SPINDRFT";
    std::string product = "Practice Drive";
    std::string revision = "1.0";
    std::uint64_t bytesPerSecond = 0;  // 0: unpaced
    std::vector<PracticeFault> faults;
    bool denyAccess = false;  // reading the disc is refused: "Permission denied"
    bool failEject = false;   // the tray stays shut
    bool noDrive = false;     // as if no drive were attached
    std::optional<PracticeDisc> disc;

    // The folder that the environment names; absent when the tools are to use real drives.
    static std::optional<std::string> chosenFolder();

    // Reads the folder as it is now. Fails when the folder, its drive.json or its disc.iso is not
    // what it should be; the sentence is one line of UTF-8, whatever they hold.
    static Result<PracticeDrive> read(const std::string& folder);
};
