#include "ByteCount.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

const QLocale english(QLocale::English, QLocale::UnitedStates);
const QLocale german(QLocale::German, QLocale::Germany);

QString inEnglish(qint64 bytes) {
    return ByteCount::format(bytes, english);
}

TEST(ByteCountTest, NothingIsZeroKilobytes) {
    EXPECT_EQ(inEnglish(0), u"Zero KB");
}

TEST(ByteCountTest, BelowAThousandItCountsBytes) {
    EXPECT_EQ(inEnglish(1), u"1 byte");
    EXPECT_EQ(inEnglish(2), u"2 bytes");
    EXPECT_EQ(inEnglish(999), u"999 bytes");
}

TEST(ByteCountTest, KilobytesHaveNoDecimals) {
    EXPECT_EQ(inEnglish(1'000), u"1 KB");
    EXPECT_EQ(inEnglish(1'499), u"1 KB");
    EXPECT_EQ(inEnglish(1'500), u"2 KB");
    EXPECT_EQ(inEnglish(2'048), u"2 KB");
    EXPECT_EQ(inEnglish(999'499), u"999 KB");
}

TEST(ByteCountTest, MegabytesHaveUpToOneDecimal) {
    EXPECT_EQ(inEnglish(1'000'000), u"1 MB");
    EXPECT_EQ(inEnglish(5'200'000), u"5.2 MB");
    EXPECT_EQ(inEnglish(5'249'999), u"5.2 MB");
    EXPECT_EQ(inEnglish(5'250'000), u"5.3 MB");
    EXPECT_EQ(inEnglish(700'000'000), u"700 MB");
    EXPECT_EQ(inEnglish(999'949'999), u"999.9 MB");
}

TEST(ByteCountTest, FromGigabytesOnThereAreUpToTwoDecimals) {
    EXPECT_EQ(inEnglish(4'700'000'000), u"4.7 GB");
    EXPECT_EQ(inEnglish(4'707'319'808), u"4.71 GB");
    EXPECT_EQ(inEnglish(25'025'314'816), u"25.03 GB");
    EXPECT_EQ(inEnglish(1'010'000'000), u"1.01 GB");
    EXPECT_EQ(inEnglish(1'250'000'000'000), u"1.25 TB");
    EXPECT_EQ(inEnglish(3'000'000'000'000'000), u"3 PB");
}

TEST(ByteCountTest, RoundingUpToAThousandGoesOnToTheNextUnit) {
    EXPECT_EQ(inEnglish(999'500), u"1 MB");
    EXPECT_EQ(inEnglish(999'950'000), u"1 GB");
    EXPECT_EQ(inEnglish(999'995'000'000), u"1 TB");
    EXPECT_EQ(inEnglish(999'994'999'999), u"999.99 GB");
    EXPECT_EQ(inEnglish(999'995'000'000'000), u"1 PB");
}

TEST(ByteCountTest, NegativeCountsCarryTheirSign) {
    EXPECT_EQ(inEnglish(-1), u"-1 byte");
    EXPECT_EQ(inEnglish(-999), u"-999 bytes");
    EXPECT_EQ(inEnglish(-5'200'000), u"-5.2 MB");
}

TEST(ByteCountTest, TheLimitsOfTheTypeAreFormatted) {
    EXPECT_EQ(inEnglish(std::numeric_limits<qint64>::max()), u"9.22 EB");
    EXPECT_EQ(inEnglish(std::numeric_limits<qint64>::min()), u"-9.22 EB");
}

TEST(ByteCountTest, TheDecimalPointIsTheLocales) {
    EXPECT_EQ(ByteCount::format(4'710'000'000, german), u"4,71 GB");
    EXPECT_EQ(ByteCount::format(5'000'000, german), u"5 MB");
}

TEST(ByteCountTest, EveryCountShowsLessThanAThousandOfItsUnit) {
    qint64 power = 1;
    for (int exponent = 3; exponent <= 18; ++exponent) {
        power = exponent == 3 ? 1'000 : power * 10;
        for (const int offset : {-501, -500, -51, -50, -5, -1, 0, 1, 50}) {
            const QString text = inEnglish(power + offset);
            const double shown = text.section(QLatin1Char(' '), 0, 0).toDouble();
            EXPECT_LT(shown, 1000) << text.toStdString();
            EXPECT_GE(shown, 1) << text.toStdString();
        }
    }
}

TEST(ByteCountTest, ASpeedIsCutToWholeBytes) {
    EXPECT_EQ(ByteCount::formatSpeed(8'400'000.9, english), u"8.4 MB/s");
    EXPECT_EQ(ByteCount::formatSpeed(1.99, english), u"1 byte/s");
    EXPECT_EQ(ByteCount::formatSpeed(0.99, english), u"Zero KB/s");
    EXPECT_EQ(ByteCount::formatSpeed(-1.99, english), u"-1 byte/s");
    EXPECT_EQ(ByteCount::formatSpeed(5'200'000, german), u"5,2 MB/s");
}

TEST(ByteCountTest, ASpeedThatIsNotFiniteCountsAsZero) {
    EXPECT_EQ(ByteCount::formatSpeed(std::numeric_limits<double>::infinity(), english),
              u"Zero KB/s");
    EXPECT_EQ(ByteCount::formatSpeed(-std::numeric_limits<double>::infinity(), english),
              u"Zero KB/s");
    EXPECT_EQ(ByteCount::formatSpeed(std::numeric_limits<double>::quiet_NaN(), english),
              u"Zero KB/s");
}

TEST(ByteCountTest, ASpeedBeyondTheTypeStopsAtItsLimit) {
    EXPECT_EQ(ByteCount::formatSpeed(1e300, english), u"9.22 EB/s");
    EXPECT_EQ(ByteCount::formatSpeed(-1e300, english), u"-9.22 EB/s");
    EXPECT_EQ(ByteCount::formatSpeed(9223372036854775808.0, english), u"9.22 EB/s");
    EXPECT_EQ(ByteCount::formatSpeed(-9223372036854775808.0, english), u"-9.22 EB/s");
}

}  // namespace
