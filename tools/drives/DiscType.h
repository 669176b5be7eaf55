// The names of the kinds of disc, as the status report prints them. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace DiscType {

// The name of a current MMC profile. "CD-ROM" is 0x08; a profile that no table lists is "Unknown".
std::string_view ofProfile(std::uint16_t profile);

// The name that a disc of this many bytes gets when nothing better is known.
std::string_view ofSize(std::uint64_t bytes);

// The name for the drive manager's type flag without its prefix, such as "DVD_PLUS_R_DL"; empty
// when it is no type flag.
std::string_view ofUdevFlag(std::string_view flag);

}  // namespace DiscType
