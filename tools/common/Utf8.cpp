#include "Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// Bytes of the UTF-8 character that begins here; 0 when none does (overlong forms, surrogates and
// values above U+10FFFF are none).
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    unsigned char secondLeast = 0x80;
    unsigned char secondMost = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        secondLeast = lead == 0xE0 ? 0xA0 : 0x80;
        secondMost = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        secondLeast = lead == 0xF0 ? 0x90 : 0x80;
        secondMost = lead == 0xF4 ? 0x8F : 0xBF;
    }
    if (length == 0 || text.size() < length || byte(1) < secondLeast || byte(1) > secondMost) {
        return 0;
    }
    for (std::size_t index = 2; index < length; ++index) {
        if (byte(index) < 0x80 || byte(index) > 0xBF) {
            return 0;
        }
    }
    return length;
}

std::uint32_t codePoint(std::string_view character) {
    constexpr std::array<unsigned, 5> leadMask = {0, 0x7F, 0x1F, 0x0F, 0x07};
    std::uint32_t value = static_cast<unsigned char>(character[0]) & leadMask[character.size()];
    for (const char next : character.substr(1)) {
        value = value << 6 | (static_cast<unsigned char>(next) & 0x3FU);
    }
    return value;
}

// C0, DEL, C1 and the two separators that end a line for readers that know Unicode.
bool isControl(std::uint32_t point) {
    return point < 0x20 || (point >= 0x7F && point <= 0x9F) || point == 0x2028 || point == 0x2029;
}

// The explicit formatting characters of bidirectional text.
bool isBidirectionalControl(std::uint32_t point) {
    return point == 0x061C || point == 0x200E || point == 0x200F ||
           (point >= 0x202A && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

}  // namespace

std::string Utf8::valid(std::string_view bytes) {
    std::string result;
    result.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        result += length == 0 ? replacement : bytes.substr(0, length);
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

std::string Utf8::oneLine(std::string_view bytes) {
    const std::string text = valid(bytes);
    std::string_view rest = text;
    std::string result;
    result.reserve(text.size());
    while (!rest.empty()) {
        const std::string_view character = rest.substr(0, characterLength(rest));
        const std::uint32_t point = codePoint(character);
        if (isControl(point) || isBidirectionalControl(point)) {
            result += ' ';
        } else {
            result += character;
        }
        rest.remove_prefix(character.size());
    }
    return result;
}

std::string_view Utf8::trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string Utf8::padded(std::string text, std::size_t width) {
    const auto count = static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
    text.append(width - std::min(count, width), ' ');
    return text;
}
