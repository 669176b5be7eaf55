#include "StrictUtf8.h"

#include <gtest/gtest.h>

namespace {

TEST(StrictUtf8Test, WellFormedTextIsDecoded) {
    EXPECT_EQ(strictUtf8(""), QString());
    EXPECT_EQ(strictUtf8("plain"), u"plain");
    EXPECT_EQ(strictUtf8("M\xC3\xBCller \xE2\x82\xAC \xF0\x9F\x92\xBF"), u"Müller € 💿");
    EXPECT_EQ(strictUtf8("\xEF\xBF\xBF\xF4\x8F\xBF\xBF"), u"\uFFFF\U0010FFFF");
}

TEST(StrictUtf8Test, NothingOfWellFormedTextIsDropped) {
    EXPECT_EQ(strictUtf8(QByteArray("a\0b", 3)), QString::fromUtf16(u"a\0b", 3));
    EXPECT_EQ(strictUtf8("\xEF\xBB\xBF"
                         "a"),
              u"\uFEFF"
              u"a");
    EXPECT_EQ(strictUtf8("a\xEF\xBB\xBF"), u"a\uFEFF");
}

TEST(StrictUtf8Test, IllFormedTextIsAbsent) {
    for (const char* bytes : {
             "\xFF",
             "a\xFE",
             "\x80",
             "a\xBF"
             "b",  // never, or not at the front
             "\xC0\xAF",
             "\xC1\xBF",
             "\xE0\x80\xAF",  // overlong
             "\xE0\x9F\xBF",
             "\xF0\x80\x80\xAF",  // overlong
             "\xED\xA0\x80",
             "\xED\xBF\xBF",              // surrogates
             "\xED\xA0\xBD\xED\xB2\xBF",  // a pair of them
             "\xF4\x90\x80\x80",
             "\xF5\x80\x80\x80",  // beyond the last character
             "\xC3",
             "\xE2\x82",
             "\xF0\x9F\x92",  // cut
             "ok \xC3",
             "ok \xE2\x82",  // cut at the end
             "\xC3(",
             "\xE2\x82(",
             "\xE2(\xA1",  // cut in the middle
             "\xEF\xBB",   // a cut byte order mark
         }) {
        EXPECT_EQ(strictUtf8(bytes), std::nullopt) << QByteArray(bytes).toHex(' ').constData();
    }
}

TEST(StrictUtf8Test, OneCallLeavesNothingBehindForTheNext) {
    EXPECT_EQ(strictUtf8("\xE2\x82"), std::nullopt);
    EXPECT_EQ(strictUtf8("\xAC"), std::nullopt);
    EXPECT_EQ(strictUtf8("\xE2\x82\xAC"), u"€");
}

TEST(StrictUtf8Test, AWholeTextKeepsItsMarkAndItsNullCharacters) {
    const std::string text("\xef\xbb\xbf\0a\xc3\xa4", 7);
    EXPECT_EQ(wholeText(text).toUtf8().toStdString(), text);
    EXPECT_EQ(wholeText(text).size(), 4);
}

}  // namespace
