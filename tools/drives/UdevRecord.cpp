#include "UdevRecord.h"

#include <charconv>

#include "DiscType.h"
#include "SmallFile.h"
#include "Utf8.h"

namespace {

constexpr std::string_view mediaPrefix = "ID_CDROM_MEDIA_";

int hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return -1;
}

}  // namespace

std::optional<UdevRecord> UdevRecord::read(const std::string& folder,
                                           const std::string& deviceNumber) {
    const auto text = SmallFile::read(folder + "/b" + deviceNumber);
    if (!text) {
        return std::nullopt;
    }
    return parse(*text);
}

UdevRecord UdevRecord::parse(std::string_view text) {
    UdevRecord record;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = line.find('=');
        if (line.substr(0, 2) == "E:" && equals != std::string_view::npos) {
            record.m_properties.insert_or_assign(std::string(line.substr(2, equals - 2)),
                                                 std::string(line.substr(equals + 1)));
        }
    }
    return record;
}

std::optional<std::string_view> UdevRecord::value(std::string_view name) const {
    const auto found = m_properties.find(name);
    if (found == m_properties.end()) {
        return std::nullopt;
    }
    return found->second;
}

std::uint64_t UdevRecord::count(std::string_view name) const {
    const std::string_view text = value(name).value_or("");
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

bool UdevRecord::knowsOpticalDrive() const {
    // A rule sets ID_CDROM for every such node; the helper, when it could ask the drive, adds what
    // the drive can do.
    const auto next = m_properties.lower_bound("ID_CDROM_");
    return value("ID_CDROM") == "1" && next != m_properties.end() &&
           std::string_view(next->first).substr(0, 9) == "ID_CDROM_";
}

std::string_view UdevRecord::discType() const {
    // A record can carry a general flag beside the exact one ("DVD" and "DVD_R"): the longest wins.
    std::string_view best = "Unknown";
    std::size_t bestLength = 0;
    for (auto row = m_properties.lower_bound(mediaPrefix); row != m_properties.end(); ++row) {
        const std::string_view name = row->first;
        if (name.substr(0, mediaPrefix.size()) != mediaPrefix) {
            break;
        }
        const std::string_view flag = name.substr(mediaPrefix.size());
        const std::string_view type = DiscType::ofUdevFlag(flag);
        if (!type.empty() && row->second == "1" && flag.size() > bestLength) {
            best = type;
            bestLength = flag.size();
        }
    }
    return best;
}

bool UdevRecord::isAudioOnly() const {
    return count("ID_CDROM_MEDIA_TRACK_COUNT_AUDIO") > 0 &&
           count("ID_CDROM_MEDIA_TRACK_COUNT_DATA") == 0;
}

bool UdevRecord::isMixed() const {
    return count("ID_CDROM_MEDIA_TRACK_COUNT_AUDIO") > 0 &&
           count("ID_CDROM_MEDIA_TRACK_COUNT_DATA") > 0;
}

std::optional<std::uint64_t> UdevRecord::mixedDataBytes(std::uint64_t discBytes) const {
    // One data track in the last session: what it takes for music with data added to it.
    const std::uint64_t start = count("ID_CDROM_MEDIA_SESSION_LAST_OFFSET");
    if (count("ID_CDROM_MEDIA_TRACK_COUNT_DATA") != 1 || start == 0 || start >= discBytes) {
        return std::nullopt;
    }
    return discBytes - start;
}

std::string UdevRecord::label() const {
    if (const auto encoded = value("ID_FS_LABEL_ENC")) {
        return Utf8::valid(Utf8::trimmed(decoded(*encoded)));
    }
    return Utf8::valid(Utf8::trimmed(value("ID_FS_LABEL").value_or("")));
}

std::string UdevRecord::decoded(std::string_view encoded) {
    std::string result;
    for (std::size_t index = 0; index < encoded.size(); ++index) {
        if (encoded.substr(index, 2) == "\\x" && index + 3 < encoded.size()) {
            const int high = hexDigit(encoded[index + 2]);
            const int low = hexDigit(encoded[index + 3]);
            if (high >= 0 && low >= 0) {
                result += static_cast<char>(high * 16 + low);
                index += 3;
                continue;
            }
        }
        result += encoded[index];
    }
    return result;
}
