#include "IniText.h"

#include <gmock/gmock.h>

#include <QSettings>

#include "TestFolder.h"

namespace {

QByteArray withOn(const QByteArray& text) {
    return IniText::withValue(text, "key", "true");
}

TEST(IniTextTest, AValueIsReadFromTheGeneralSectionAndFromAboveTheFirst) {
    EXPECT_EQ(IniText::value("[General]\nkey=1\n", "key"), QStringLiteral("1"));
    EXPECT_EQ(IniText::value("key = 1 \r\n", "key"), QStringLiteral("1"));
    EXPECT_EQ(IniText::value("[other]\nkey=1\n[general]\nkey=2", "key"), QStringLiteral("2"));
    EXPECT_EQ(IniText::value("[General]\nkey=1\nkey=2\n", "key"), QStringLiteral("2"));
    EXPECT_EQ(IniText::value("\xef\xbb\xbf[General]\nkey=1\n", "key"), QStringLiteral("1"));
    EXPECT_EQ(IniText::value("[General]\nkey=\n", "key"), QString(QLatin1String("")));
}

TEST(IniTextTest, WhatIsNoSuchKeyIsAbsent) {
    for (const char* text : {"", "[General]\n", "[other]\nkey=1\n", "; key=1\n", "Key=1\n", "key\n",
                             "akey=1\n", "[General]\nother=key=1\n", "[key=1]\n", "=1\n"}) {
        EXPECT_EQ(IniText::value(text, "key"), std::nullopt) << text;
    }
}

TEST(IniTextTest, QuotesAndCommentsAreNoPartOfAValue) {
    EXPECT_EQ(IniText::value("key=\" a;b \" ; c\n", "key"), QStringLiteral(" a;b "));
    EXPECT_EQ(IniText::value("key=true ; as it was\n", "key"), QStringLiteral("true"));
    EXPECT_EQ(IniText::value("key=\"\nother=1\n", "key"), QString(QLatin1String("")));
}

TEST(IniTextTest, OnlyTheValueChanges) {
    EXPECT_EQ(withOn("[a]\nkey=0\n\n; note\n[General]\r\nkey = 0\r\nx=\xff\n[b]\nkey=0"),
              "[a]\nkey=0\n\n; note\n[General]\r\nkey = true\r\nx=\xff\n[b]\nkey=0");
    EXPECT_EQ(withOn("key=0\nkey=\n"), "key=0\nkey=true\n");
}

TEST(IniTextTest, ANewKeyFollowsTheLastOfItsSection) {
    EXPECT_EQ(withOn(""), "[General]\nkey=true\n");
    EXPECT_EQ(withOn("[General]\n"), "[General]\nkey=true\n");
    EXPECT_EQ(withOn("[General]\na=1\n\n[b]\nc=2\n"), "[General]\na=1\nkey=true\n\n[b]\nc=2\n");
    EXPECT_EQ(withOn("[General]\na=1"), "[General]\na=1\nkey=true");
    EXPECT_EQ(withOn("[b]\nkey=2\n"), "[b]\nkey=2\n\n[General]\nkey=true\n");
    EXPECT_EQ(withOn("[b]"), "[b]\n\n[General]\nkey=true\n");
}

TEST(IniTextTest, WhatIsWrittenIsWhatQSettingsReads) {
    const TestFolder folder;
    for (const char* before : {"", "[General]\na=1\n\n[b]\nkey=2\n", "a=1\n", "[b]\nkey=2",
                               "; note\n[General]\nkey=false ; no\na=1\n", "[general]\nkey=0\n"}) {
        const QString file =
            folder.write(QString::number(qHash(QByteArray(before))), withOn(before));
        EXPECT_TRUE(QSettings(file, QSettings::IniFormat).value(QStringLiteral("key")).toBool())
            << before;
    }
}

}  // namespace
