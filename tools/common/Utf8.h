// Text from drives and discs, made fit for output: always valid UTF-8, one line, cut to columns.
// Pure functions; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Utf8 {

// The same text with each byte that belongs to no UTF-8 character replaced by U+FFFD.
std::string valid(std::string_view bytes);

// valid(), with control characters (line ends and tabs among them) replaced by blanks.
std::string oneLine(std::string_view bytes);

// Without the blanks, tabs and line ends at both ends.
std::string_view trimmed(std::string_view text);

// How many characters a reader sees; combining marks count with the character that they change.
// The text must be valid.
std::size_t characterCount(std::string_view text);

// Exactly `width` characters: cut, or padded with blanks at the end. The text must be valid.
std::string column(std::string_view text, std::size_t width);

}  // namespace Utf8
