// The label of the file system on a disc or in its image, found by libblkid.
#pragma once

#include <string>

namespace FileSystemLabel {

// Valid UTF-8 without blanks at its ends; empty when there is no file system, it has no label, it
// cannot be read or libblkid is not installed. Reads a few dozen KiB. The descriptor's offset may
// move.
std::string read(int descriptor);

// The same for a file that is opened for it.
std::string readFile(const std::string& path);

}  // namespace FileSystemLabel
