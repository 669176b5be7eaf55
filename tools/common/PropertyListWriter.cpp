#include "PropertyListWriter.h"

#include "Utf8.h"

void PropertyListWriter::add(std::string_view key, std::string_view text) {
    addKey(key);
    m_entries += "\t<string>" + escaped(text) + "</string>\n";
}

void PropertyListWriter::add(std::string_view key, std::uint64_t number) {
    addKey(key);
    m_entries += "\t<integer>" + std::to_string(number) + "</integer>\n";
}

void PropertyListWriter::add(std::string_view key, const std::vector<std::string>& texts) {
    addKey(key);
    if (texts.empty()) {
        m_entries += "\t<array/>\n";
        return;
    }
    m_entries += "\t<array>\n";
    for (const std::string& text : texts) {
        m_entries += "\t\t<string>" + escaped(text) + "</string>\n";
    }
    m_entries += "\t</array>\n";
}

std::string PropertyListWriter::text() const {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<plist version=\"1.0\">\n<dict>\n" +
           m_entries + "</dict>\n</plist>\n";
}

std::string PropertyListWriter::escaped(std::string_view text) {
    constexpr std::string_view unholdable = "\xEF\xBF\xBD";
    const std::string characters = Utf8::valid(text);
    std::string result;
    result.reserve(characters.size());
    for (std::size_t index = 0; index < characters.size(); ++index) {
        const char character = characters[index];
        if (character == '&') {
            result += "&amp;";
        } else if (character == '<') {
            result += "&lt;";
        } else if (character == '>') {
            result += "&gt;";
        } else if (character == '\r') {
            result += "&#13;";  // a reader turns a plain one into a line feed
        } else if (static_cast<unsigned char>(character) < 0x20 && character != '\n' &&
                   character != '\t') {
            result += unholdable;
        } else if (characters.compare(index, 3, "\xEF\xBF\xBE") == 0 ||
                   characters.compare(index, 3, "\xEF\xBF\xBF") == 0) {
            result += unholdable;
            index += 2;
        } else {
            result += character;
        }
    }
    return result;
}

void PropertyListWriter::addKey(std::string_view key) {
    m_entries += "\t<key>" + escaped(key) + "</key>\n";
}
