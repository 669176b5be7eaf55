#include "MountTable.h"

#include <algorithm>

#include "FuzzTarget.h"

namespace {

// As the kernel writes a folder.
std::string encoded(std::string_view folder) {
    std::string text;
    for (const char byte : folder) {
        const auto value = static_cast<unsigned char>(byte);
        if (byte == ' ' || byte == '\t' || byte == '\n' || byte == '\\') {
            text += '\\';
            text += static_cast<char>('0' + (value >> 6));
            text += static_cast<char>('0' + (value >> 3 & 7));
            text += static_cast<char>('0' + (value & 7));
        } else {
            text += byte;
        }
    }
    return text;
}

}  // namespace

FUZZ_TARGET(MountTable) {
    const auto folders = MountTable::mountPoints(bytes, "11:0");
    const auto lines = std::count(bytes.begin(), bytes.end(), '\n') + 1;
    ensure(folders.size() <= static_cast<std::size_t>(lines), "a line names at most one folder");
    ensure(std::none_of(folders.begin(), folders.end(), [](const auto& f) { return f.empty(); }),
           "a folder has a name");
    ensure(MountTable::decoded(encoded(bytes)) == bytes, "what was encoded is decoded");
    if (!bytes.empty()) {
        const auto again = MountTable::mountPoints(
            std::string(bytes) + "\n36 1 11:0 / " + encoded(bytes) + " rw - iso9660 sr0 ro\n",
            "11:0");
        ensure(again.size() > folders.size() && again.front() == bytes,
               "the disc mounted last comes first, whatever stands before it");
    }
}
