// What an optical drive is asked about the disc in it. Each call sends it commands, which can take
// seconds; the descriptor is the drive's, opened for reading. Stateless; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "DiscLayout.h"

namespace OpticalCommands {

// The disc's MMC profile; absent when the drive does not tell.
std::optional<std::uint16_t> currentProfile(int drive);

// Whether the drive says that nothing has been recorded on the disc; false when it won't say.
bool discIsBlank(int drive);

// Which sectors are imaged. By the table of contents; the whole disc where there is none.
DiscLayout layout(int drive);

// The profile in a GET CONFIGURATION answer; absent when it is too short to hold one.
std::optional<std::uint16_t> profileIn(std::span<const std::byte> answer);
// Whether a READ DISC INFORMATION answer says that nothing is recorded; one that is cut does not.
bool isBlankIn(std::span<const std::byte> answer);

}  // namespace OpticalCommands
