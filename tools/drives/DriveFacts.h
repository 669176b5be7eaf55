// A drive and the disc in it, as the disc tools report them. Plain values; every text is UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct DiscFacts {
    std::string type;        // "DVD+R DL"
    std::string volumeName;  // empty without one, or when it was not asked for
    // What an image of it holds, 0 for a blank disc; absent when only the drive could tell.
    std::optional<std::uint64_t> bytes = 0;
    bool audio = false;  // audio tracks only
    bool blank = false;

    bool operator==(const DiscFacts&) const = default;
};

struct DriveFacts {
    std::string node;  // the device's name without "/dev/"
    std::string vendor;
    std::string product;
    std::string revision;
    std::optional<DiscFacts> disc;  // absent: the tray is empty

    bool operator==(const DriveFacts&) const = default;
};
