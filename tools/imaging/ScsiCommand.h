// A command that reads from an optical drive, sent past the kernel's block layer.
#pragma once

#include <cstddef>
#include <span>

namespace ScsiCommand {

// Sends the command and fills the answer. 0, or the number of the error: ENOMEDIUM when the drive
// says that it holds no disc, EIO for whatever else it complains of. An answer that is too short is
// an error when the answer has to be exact.
enum class Answer { UpTo, Exact };
int run(int descriptor, std::span<const std::byte> command, std::span<std::byte> answer,
        Answer length = Answer::UpTo);

}  // namespace ScsiCommand
