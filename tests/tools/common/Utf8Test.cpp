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
}

TEST(Utf8Test, TrimmingTakesBlanksAndLineEndsFromBothEndsOnly) {
    EXPECT_EQ(Utf8::trimmed("  a b \n"), "a b");
    EXPECT_EQ(Utf8::trimmed(" \t\r\n"), "");
    EXPECT_EQ(Utf8::trimmed(""), "");
}

TEST(Utf8Test, AColumnIsCutAndPaddedByCharactersNotBytes) {
    EXPECT_EQ(Utf8::column("ab", 4), "ab  ");
    EXPECT_EQ(Utf8::column("abcdef", 4), "abcd");
    EXPECT_EQ(Utf8::column("\xC3\xBC\xC3\xBC\xC3\xBC", 2), "\xC3\xBC\xC3\xBC");
    EXPECT_EQ(Utf8::column("\xC3\xBC", 3), "\xC3\xBC  ");
    EXPECT_EQ(Utf8::column("", 2), "  ");
}

TEST(Utf8Test, ACombiningMarkStaysWithItsCharacter) {
    const std::string text = "u\xCC\x88x";  // u, diaeresis, x
    EXPECT_EQ(Utf8::characterCount(text), 2U);
    EXPECT_EQ(Utf8::column(text, 1), "u\xCC\x88");
    EXPECT_EQ(Utf8::column(text, 3), text + " ");
}

TEST(Utf8Test, AVowelSignOrAToneMarkStaysWithItsLetter) {
    EXPECT_EQ(Utf8::characterCount("\u0928\u0947"), 1U);        // Hindi
    EXPECT_EQ(Utf8::characterCount("\u0E01\u0E47\u0E33"), 1U);  // Thai
    EXPECT_EQ(Utf8::characterCount("\u0041\U000E0100"), 1U);
    EXPECT_EQ(Utf8::characterCount("\u02FF\u0370"), 2U);  // beside the first range of marks
}

TEST(Utf8Test, ConsonantsThatAreBoundTogetherAreOneCharacter) {
    const std::string namaste = "\u0928\u092E\u0938\u094D\u0924\u0947";
    EXPECT_EQ(Utf8::characterCount(namaste), 3U);
    EXPECT_EQ(Utf8::column(namaste, 4), namaste + " ");
    EXPECT_EQ(Utf8::characterCount("\u0938\u094D"
                                   "a"),
              2U);
    EXPECT_EQ(Utf8::characterCount("\u0938\u0924"), 2U);
}

TEST(Utf8Test, AnEmojiOfSeveralCodePointsIsOneCharacter) {
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
    EXPECT_EQ(Utf8::characterCount(family), 1U);
    EXPECT_EQ(Utf8::column(family + "ab", 2), family + "a");
    EXPECT_EQ(Utf8::characterCount("\U0001F44D\U0001F3FD"), 1U);              // a skin tone
    EXPECT_EQ(Utf8::characterCount("\U0001F3F3\uFE0F\u200D\U0001F308"), 1U);  // two of them
    EXPECT_EQ(Utf8::characterCount("\U0001F3F4\U000E0067\U000E007F"), 1U);    // tags
    EXPECT_EQ(Utf8::characterCount("\U0001F44D\U0001F44D"), 2U);
    EXPECT_EQ(Utf8::characterCount("a\u200D\U0001F44D"), 2U);
}

TEST(Utf8Test, EachPairOfFlagLettersIsOneCharacter) {
    const std::string german = "\U0001F1E9\U0001F1EA";
    const std::string french = "\U0001F1EB\U0001F1F7";
    EXPECT_EQ(Utf8::characterCount(german + french), 2U);
    EXPECT_EQ(Utf8::characterCount(german + french + "\U0001F1EE"), 3U);
    EXPECT_EQ(Utf8::column(german + french, 1), german);
    EXPECT_EQ(Utf8::column(german, 2), german + " ");
}

TEST(Utf8Test, AMarkAtTheStartTakesNoColumnOfItsOwn) {
    EXPECT_EQ(Utf8::characterCount("\u0301x"), 1U);
    EXPECT_EQ(Utf8::column("\u0301x", 2), "\u0301x ");
}

}  // namespace
