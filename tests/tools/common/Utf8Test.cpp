#include "Utf8.h"

#include <gmock/gmock.h>

namespace {

const std::string unknown = "\xEF\xBF\xBD";

TEST(Utf8Test, TextThatIsValidStaysAsItIs) {
    const std::string text = "A\xC3\xBC\xE2\x82\xAC\xF0\x9F\x92\xBF";
    EXPECT_EQ(Utf8::valid(text), text);
}

TEST(Utf8Test, EveryByteThatBelongsToNoCharacterIsReplaced) {
    EXPECT_EQ(Utf8::valid("M\xFCller"), "M" + unknown + "ller");
    EXPECT_EQ(Utf8::valid("\xC3"), unknown);
    EXPECT_EQ(Utf8::valid("a\xE2\x82"), "a" + unknown + unknown);
}

TEST(Utf8Test, OverlongFormsSurrogatesAndTooLargeValuesAreNotCharacters) {
    EXPECT_EQ(Utf8::valid("\xC0\x80"), unknown + unknown);
    EXPECT_EQ(Utf8::valid("\xE0\x80\x80"), unknown + unknown + unknown);
    EXPECT_EQ(Utf8::valid("\xED\xA0\x80"), unknown + unknown + unknown);
    EXPECT_EQ(Utf8::valid("\xF4\x90\x80\x80"), unknown + unknown + unknown + unknown);
    EXPECT_EQ(Utf8::valid("\xF5\x80\x80\x80"), unknown + unknown + unknown + unknown);
}

TEST(Utf8Test, EveryPairOfBytesBecomesTextThatStaysAsItIsWhenReadAgain) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string bytes = {static_cast<char>(first), static_cast<char>(second)};
            const std::string text = Utf8::valid(bytes);
            ASSERT_EQ(Utf8::valid(text), text) << first << " " << second;
        }
    }
}

TEST(Utf8Test, OneLineHoldsNoControlCharacterOfAnyKind) {
    EXPECT_EQ(Utf8::oneLine("a\nb\tc\rd"), "a b c d");
    EXPECT_EQ(Utf8::oneLine("a\xC2\x85z"), "a z");      // next line
    EXPECT_EQ(Utf8::oneLine("a\xE2\x80\xA8z"), "a z");  // line separator
    EXPECT_EQ(Utf8::oneLine(std::string("a\0z", 3)), "a z");
    EXPECT_EQ(Utf8::oneLine("a\x7Fz"), "a z");
    EXPECT_EQ(Utf8::oneLine("a\xC2\x9Bz"), "a z");  // begins a command to a terminal
}

TEST(Utf8Test, OneLineHoldsNothingThatReordersIt) {
    for (const char* control : {"\xD8\x9C", "\xE2\x80\x8E", "\xE2\x80\x8F", "\xE2\x80\xAA",
                                "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9"}) {
        EXPECT_EQ(Utf8::oneLine(std::string("a") + control + "z"), "a z");
    }
    EXPECT_EQ(Utf8::oneLine("\xD7\x90\xE2\x80\x8D"), "\xD7\x90\xE2\x80\x8D");
}

TEST(Utf8Test, TrimmingTakesBlanksAndLineEndsFromBothEndsOnly) {
    EXPECT_EQ(Utf8::trimmed("  a b \n"), "a b");
    EXPECT_EQ(Utf8::trimmed(" \t\r\n"), "");
    EXPECT_EQ(Utf8::trimmed(""), "");
}

TEST(Utf8Test, PaddingCountsCodePointsNotBytes) {
    EXPECT_EQ(Utf8::padded("ab", 4), "ab  ");
    EXPECT_EQ(Utf8::padded("\xC3\xBC\xF0\x9F\x92\xBF", 4), "\xC3\xBC\xF0\x9F\x92\xBF  ");
    EXPECT_EQ(Utf8::padded("", 2), "  ");
}

TEST(Utf8Test, PaddingLeavesLongTextsWhole) {
    EXPECT_EQ(Utf8::padded("abcd", 4), "abcd");
    EXPECT_EQ(Utf8::padded("abcdef", 4), "abcdef");
}

}  // namespace
