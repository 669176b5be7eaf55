// The digest of a file's bytes.
#pragma once

#include <string>

#include "Result.h"

namespace FileDigest {

// The lower-case hexadecimal SHA digest of the file, "-" being standard input. Files and block
// devices are read from their disk, not from memory. algorithm: 1, 224, 256, 384 or 512. A
// failure's sentence does not name the file.
Result<std::string> ofFile(const std::string& path, int algorithm);

// Whether there is such an algorithm.
bool isKnown(int algorithm);

}  // namespace FileDigest
