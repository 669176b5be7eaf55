// Random bytes taken for several values, one after the other; the last ones may be empty or zero.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class FuzzInput final {
public:
    // Between two texts of an input.
    static constexpr char separator = '\x1E';

    explicit FuzzInput(std::string_view bytes) : m_rest(bytes) {}

    bool isEmpty() const { return m_rest.empty(); }
    std::string_view rest() const { return m_rest; }

    std::string text() {
        const std::string text(m_rest.substr(0, m_rest.find(separator)));
        m_rest.remove_prefix(std::min(text.size() + 1, m_rest.size()));
        return text;
    }

    // A text of decimal digits; 0 for any other.
    std::int64_t number() {
        const std::string digits = text();
        std::int64_t number = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
        return number;
    }

    // That many bytes, the lowest first.
    std::uint64_t binary(std::size_t count) {
        std::uint64_t number = 0;
        const std::string_view taken = bytes(count);
        for (std::size_t i = taken.size(); i-- > 0;) {
            number = number << 8 | static_cast<unsigned char>(taken[i]);
        }
        return number;
    }

    std::string_view bytes(std::size_t count) {
        const std::string_view taken = m_rest.substr(0, count);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

private:
    std::string_view m_rest;
};
