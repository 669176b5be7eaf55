#include "MountTable.h"

#include <algorithm>

#include "SmallFile.h"

namespace {

bool isOctal(char digit, char most) {
    return digit >= '0' && digit <= most;
}

std::string_view nextWord(std::string_view& line) {
    const std::size_t end = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return word;
}

}  // namespace

std::vector<std::string> MountTable::mountPoints(std::string_view table,
                                                 std::string_view deviceNumber) {
    std::vector<std::string> found;
    while (!table.empty()) {
        const std::size_t end = std::min(table.find('\n'), table.size());
        std::string_view line = table.substr(0, end);
        table.remove_prefix(std::min(end + 1, table.size()));
        nextWord(line);  // the mount's number
        nextWord(line);  // its parent's
        const std::string_view number = nextWord(line);
        nextWord(line);  // the part of the file system that is mounted
        const std::string_view folder = nextWord(line);
        if (number == deviceNumber && !folder.empty()) {
            found.push_back(decoded(folder));
        }
    }
    std::reverse(found.begin(), found.end());
    return found;
}

std::vector<std::string> MountTable::read(const std::string& processes,
                                          std::string_view deviceNumber) {
    const auto table = SmallFile::read(processes + "/self/mountinfo");
    return mountPoints(table.value_or(""), deviceNumber);
}

std::string MountTable::decoded(std::string_view encoded) {
    std::string result;
    for (std::size_t index = 0; index < encoded.size(); ++index) {
        if (encoded[index] == '\\' && index + 3 < encoded.size() &&
            isOctal(encoded[index + 1], '3') && isOctal(encoded[index + 2], '7') &&
            isOctal(encoded[index + 3], '7')) {
            result +=
                static_cast<char>((encoded[index + 1] - '0') * 64 + (encoded[index + 2] - '0') * 8 +
                                  (encoded[index + 3] - '0'));
            index += 3;
        } else {
            result += encoded[index];
        }
    }
    return result;
}
