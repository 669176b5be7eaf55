// Text from drives and discs, made fit for output: always valid UTF-8, one line, padded.
// Pure functions; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Utf8 {

// The same text with each byte that belongs to no UTF-8 character replaced by U+FFFD.
std::string valid(std::string_view bytes);

// valid(), with control characters (line ends and tabs among them) and those that reorder the text
// around them replaced by blanks.
std::string oneLine(std::string_view bytes);

// Without the blanks, tabs and line ends at both ends.
std::string_view trimmed(std::string_view text);

// With blanks at the end, at least `width` code points long. The text must be valid.
std::string padded(std::string text, std::size_t width);

}  // namespace Utf8
