// Writes XML property lists: one dictionary of texts, whole numbers and lists of texts.
//
// Use: add entries, in the order in which they are to stand, then take text().
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class PropertyListWriter final {
public:
    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, std::uint64_t number);
    void add(std::string_view key, const std::vector<std::string>& texts);

    // The whole document. Always well-formed UTF-8.
    std::string text() const;

    // For a place between tags: invalid bytes, and characters that XML cannot hold, become U+FFFD.
    static std::string escaped(std::string_view text);

private:
    void addKey(std::string_view key);

    std::string m_entries;
};
