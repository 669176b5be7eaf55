#include "Characters.h"

#include <gtest/gtest.h>

namespace {

QStringList of(const char* text) {
    return Characters::of(QString::fromUtf8(text));
}

TEST(CharactersTest, AnEmptyTextHasNone) {
    EXPECT_EQ(of(""), QStringList());
}

TEST(CharactersTest, EachOfAPlainTextIsOne) {
    EXPECT_EQ(of("a b"), QStringList({"a", " ", "b"}));
}

TEST(CharactersTest, AMarkBelongsToItsLetter) {
    EXPECT_EQ(of("e\u0301x"), QStringList({"e\u0301", "x"}));
    EXPECT_EQ(of("\u0928\u0947x"), QStringList({"\u0928\u0947", "x"}));              // Hindi
    EXPECT_EQ(of("\u0E01\u0E47\u0E33x"), QStringList({"\u0E01\u0E47\u0E33", "x"}));  // Thai
    EXPECT_EQ(of("\u1112\u1161\u11abx"), QStringList({"\u1112\u1161\u11ab", "x"}));  // Korean
}

TEST(CharactersTest, AnEmojiOfSeveralCodePointsIsOne) {
    for (const char* emoji : {"\U0001F4BF", "\U0001F468\u200D\U0001F469\u200D\U0001F467",
                              "\U0001F44D\U0001F3FD", "\U0001F3F3\uFE0F\u200D\U0001F308",
                              "\U0001F3F4\U000E0067\U000E007F", "\U0001F1E9\U0001F1EA"}) {
        const QString text = QString::fromUtf8(emoji);
        EXPECT_EQ(Characters::of(text + text + u'a'), QStringList({text, text, "a"})) << emoji;
    }
}

TEST(CharactersTest, AnEmojiBesideALetterOfAnyScriptStaysWhole) {
    for (const char* letter : {"a", "\u05D0", "\u0627", "\u0928", "\u0995", "\u0BA8", "\u0E01",
                               "\u0E81", "\u0F40", "\u1000", "\u1780", "\u3042", "\u65E5"}) {
        for (const char* emoji : {"\U0001F4BF", "\U0001F1E9\U0001F1EA"}) {
            const QString first = QString::fromUtf8(letter);
            const QString second = QString::fromUtf8(emoji);
            EXPECT_EQ(Characters::of(first + second), QStringList({first, second})) << letter;
            EXPECT_EQ(Characters::of(second + first), QStringList({second, first})) << letter;
        }
    }
    EXPECT_EQ(of("\U0001F4BF\U0001F1E9\U0001F1EA"),
              QStringList({"\U0001F4BF", "\U0001F1E9\U0001F1EA"}));
}

TEST(CharactersTest, JoinedTheyAreTheTextAgain) {
    for (const char* text :
         {"\u0939\u093F\u0928\u094D\u0926\u0940 \U0001F4BF", "\u0301x", "a\r\nb\tc"}) {
        const QStringList characters = of(text);
        EXPECT_EQ(characters.join(QString()), QString::fromUtf8(text));
        for (const QString& character : characters) {
            EXPECT_FALSE(character.front().isLowSurrogate() || character.back().isHighSurrogate())
                << text;
        }
    }
}

}  // namespace
