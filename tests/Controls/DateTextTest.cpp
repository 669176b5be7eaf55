#include "DateText.h"

#include <gmock/gmock.h>

namespace {

QDateTime evening() {
    return {QDate(2025, 1, 31), QTime(18, 4, 59)};
}

// With a plain space where newer locale data has a narrow one.
std::string english(const QLocale& locale) {
    return DateText::abbreviated(evening(), locale).replace(QChar(0x202F), u' ').toStdString();
}

TEST(DateTextTest, AnEnglishDateIsAbbreviatedWithAShortTime) {
    EXPECT_EQ(english(QLocale(QStringLiteral("en_US"))), "Jan 31, 2025 at 6:04 PM");
}

TEST(DateTextTest, WithoutALanguageTheDateIsEnglish) {
    EXPECT_EQ(english(QLocale::c()), "Jan 31, 2025 at 6:04 PM");
}

TEST(DateTextTest, AnotherLocaleHasItsOwnOrderAndNoWeekday) {
    const QLocale german(QStringLiteral("de_DE"));
    const QString text = DateText::abbreviated(evening(), german);
    EXPECT_TRUE(text.contains(QStringLiteral("31."))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("18:04"))) << text.toStdString();
    EXPECT_FALSE(text.contains(german.dayName(5))) << text.toStdString();
}

TEST(DateTextTest, NoLocaleLeavesAWeekdayOrAFormatLetter) {
    for (const char* name : {"C", "fr_FR", "ja_JP", "zh_CN", "hu_HU", "sv_SE", "th_TH", "ar_EG"}) {
        const QLocale locale(QString::fromLatin1(name));
        const QString text = DateText::abbreviated(evening(), locale);
        EXPECT_FALSE(text.contains(locale.dayName(5))) << name << ": " << text.toStdString();
        EXPECT_FALSE(text.contains(QStringLiteral("dd"))) << name << ": " << text.toStdString();
    }
}

TEST(DateTextTest, ADateInAnotherZoneIsShownInTheUsersOwn) {
    const QDateTime utc = evening().toUTC();
    const QLocale locale(QStringLiteral("en_US"));
    EXPECT_EQ(DateText::abbreviated(utc, locale), DateText::abbreviated(evening(), locale));
}

}  // namespace
