// Reads the small files in which the kernel and the system tell about themselves, and writes a
// tool's whole output. Stateless; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace SmallFile {

// The file's content; absent when it cannot be opened or read. errno tells why.
std::optional<std::string> read(const std::string& path);

// Writes all of it, waiting where the descriptor would not block: 0, or the number of the error.
int writeAll(int descriptor, std::string_view text);

}  // namespace SmallFile
