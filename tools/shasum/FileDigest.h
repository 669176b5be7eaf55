// The digest of a file's bytes.
#pragma once

#include <optional>
#include <string>

namespace FileDigest {

// The lower-case hexadecimal SHA digest of the file, "-" being standard input. Files and block
// devices are read from their disk, not from memory. algorithm: 1, 224, 256, 384 or 512. Absent on
// failure; *problem is then the reason without the file's name.
std::optional<std::string> ofFile(const std::string& path, int algorithm, std::string* problem);

// Whether there is such an algorithm.
bool isKnown(int algorithm);

}  // namespace FileDigest
