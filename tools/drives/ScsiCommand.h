// A command that reads from an optical drive, sent past the kernel's block layer.
#pragma once

#include <chrono>
#include <cstddef>
#include <span>

namespace ScsiCommand {

struct Answer {
    // 0, or the number of the error: ENOMEDIUM when the drive says that it holds no disc, EIO for
    // whatever else it complains of.
    int error = 0;
    std::size_t bytes = 0;  // of the answer that came; none after an error
};

// Sends the command, of at most 16 bytes, and fills the answer. The descriptor is the drive's.
Answer run(int drive, std::span<const std::byte> command, std::span<std::byte> answer,
           std::chrono::milliseconds limit);

}  // namespace ScsiCommand
