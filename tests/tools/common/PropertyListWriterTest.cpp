#include "PropertyListWriter.h"

#include <gmock/gmock.h>

namespace {

const std::string unknown = "\xEF\xBF\xBD";

TEST(PropertyListWriterTest, EntriesStandInTheOrderInWhichTheyWereAdded) {
    PropertyListWriter list;
    list.add("Name", "A");
    list.add("Size", std::uint64_t{18446744073709551615U});
    list.add("None", std::vector<std::string>());
    list.add("Two", std::vector<std::string>{"x", "y"});
    EXPECT_EQ(list.text(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<plist version=\"1.0\">\n<dict>\n"
              "\t<key>Name</key>\n\t<string>A</string>\n"
              "\t<key>Size</key>\n\t<integer>18446744073709551615</integer>\n"
              "\t<key>None</key>\n\t<array/>\n"
              "\t<key>Two</key>\n\t<array>\n\t\t<string>x</string>\n\t\t<string>y</string>\n"
              "\t</array>\n</dict>\n</plist>\n");
}

TEST(PropertyListWriterTest, MarkupInATextIsEscaped) {
    EXPECT_EQ(PropertyListWriter::escaped("<a & b>]]>"), "&lt;a &amp; b&gt;]]&gt;");
}

TEST(PropertyListWriterTest, ControlCharactersThatXmlCannotHoldAreReplaced) {
    for (int character = 1; character < 0x20; ++character) {
        const std::string text(1, static_cast<char>(character));
        const std::string expected = character == '\t' || character == '\n' ? text
                                     : character == '\r'                    ? "&#13;"
                                                                            : unknown;
        EXPECT_EQ(PropertyListWriter::escaped(text), expected) << character;
    }
    EXPECT_EQ(PropertyListWriter::escaped(std::string(1, '\0')), unknown);
    EXPECT_EQ(PropertyListWriter::escaped("\xEF\xBF\xBE|\xEF\xBF\xBF"), unknown + "|" + unknown);
}

TEST(PropertyListWriterTest, BytesThatAreNotUtf8AreReplaced) {
    EXPECT_EQ(PropertyListWriter::escaped("\xFF<"), unknown + "&lt;");
}

TEST(PropertyListWriterTest, BlanksAndOtherScriptsStayAsTheyAre) {
    EXPECT_EQ(PropertyListWriter::escaped("  a \xE6\x97\xA5\xE6\x9C\xAC "),
              "  a \xE6\x97\xA5\xE6\x9C\xAC ");
}

}  // namespace
