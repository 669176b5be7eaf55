#include "ProgressLines.h"

#include <gmock/gmock.h>

#include <QLocale>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QList<double> of(const QByteArray& text) {
    return ProgressLines().append(text);
}

TEST(ProgressLinesTest, APercentageBecomesAFraction) {
    EXPECT_THAT(of("PERCENT:42.5\n"), ElementsAre(0.425));
    EXPECT_THAT(of("PERCENT:0\n"), ElementsAre(0.0));
    EXPECT_THAT(of("PERCENT:100.000000\n"), ElementsAre(1.0));
}

TEST(ProgressLinesTest, MoreThanEverythingIsEverything) {
    EXPECT_THAT(of("PERCENT:150\n"), ElementsAre(1.0));
    EXPECT_THAT(of("PERCENT:1e999\n"), ElementsAre(1.0));
}

TEST(ProgressLinesTest, ANegativePercentageIsMinusOne) {
    EXPECT_THAT(of("PERCENT:-1\n"), ElementsAre(-1.0));
    EXPECT_THAT(of("PERCENT:-0.001\n"), ElementsAre(-1.0));
    EXPECT_THAT(of("PERCENT:-1e999\n"), ElementsAre(-1.0));
}

TEST(ProgressLinesTest, ANegativeZeroIsNotNegative) {
    EXPECT_THAT(of("PERCENT:-0.0\n"), ElementsAre(0.0));
}

TEST(ProgressLinesTest, NothingBehindTheMarkerChangesNothing) {
    EXPECT_THAT(of("PERCENT:\n"), IsEmpty());
    EXPECT_THAT(of("PERCENT: \t \n"), IsEmpty());
}

TEST(ProgressLinesTest, WhatIsNotADecimalNumberChangesNothing) {
    for (const char* text : {"abc",
                             "4 2",
                             "42.5%",
                             "42,5",
                             "1.2.3",
                             "--1",
                             "+-1",
                             "+",
                             "-",
                             ".",
                             "e5",
                             "1e",
                             "1e+",
                             "inf",
                             "-inf",
                             "INFINITY",
                             "nan",
                             "0x10",
                             "0x1p3",
                             "1_000",
                             "1'000",
                             "1,000",
                             "1f",
                             "42\xC2\xA0",
                             "\xC2\xA0"
                             "42",
                             "\xD9\xA4\xD9\xA2",
                             "\xEF\xBC\x94"}) {
        EXPECT_THAT(of(QByteArray("PERCENT:") + text + "\n"), IsEmpty()) << text;
    }
}

TEST(ProgressLinesTest, EveryFormOfADecimalNumberCounts) {
    for (const char* text :
         {"50", "+50", "050", "50.", "50.0", "5e1", "5E+1", "500e-1", ".5e2", "+.5E2", "0.5e02"}) {
        EXPECT_THAT(of(QByteArray("PERCENT:") + text + "\n"), ElementsAre(0.5)) << text;
    }
}

TEST(ProgressLinesTest, BlanksAndTabsAroundTheNumberAreDropped) {
    EXPECT_THAT(of("PERCENT: \t 42.5 \t \n"), ElementsAre(0.425));
}

TEST(ProgressLinesTest, TheMarkerCountsAnywhereInALine) {
    EXPECT_THAT(of("noise PERCENT:42.5\n"), ElementsAre(0.425));
}

TEST(ProgressLinesTest, TheFirstMarkerOfALineIsTheOneThatCounts) {
    EXPECT_THAT(of("PERCENT:PERCENT:42.5\n"), IsEmpty());
    EXPECT_THAT(of("PERCENT:42.5 PERCENT:43\n"), IsEmpty());
}

TEST(ProgressLinesTest, TheMarkerIsCaseSensitiveAndWhole) {
    EXPECT_THAT(of("percent:42\nPERCENT 42\nPERCENT :42\n"), IsEmpty());
}

TEST(ProgressLinesTest, OtherLinesArePassedOver) {
    EXPECT_THAT(of("Reading\n\nPERCENT:1\ncreated: /tmp/x.cdr\nPERCENT:2\n"),
                ElementsAre(0.01, 0.02));
}

TEST(ProgressLinesTest, EveryNewlineCharacterOfUnicodeEndsALine) {
    for (const char* newline :
         {"\n", "\v", "\f", "\r", "\r\n", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"}) {
        EXPECT_THAT(of(QByteArray("PERCENT:25") + newline + "PERCENT:50" + newline),
                    ElementsAre(0.25, 0.5))
            << QByteArray(newline).toHex().constData();
    }
}

TEST(ProgressLinesTest, OtherControlCharactersEndNoLine) {
    for (const char* character : {"\x1C", "\x1D", "\x1E", "\x1F", "\b"}) {
        EXPECT_THAT(of(QByteArray("PERCENT:25") + character + "\n"), IsEmpty());
    }
    EXPECT_THAT(of(QByteArray("PERCENT:25\0\n", 12)), IsEmpty());
}

TEST(ProgressLinesTest, ALineThatArrivesInPiecesCountsOnceWhenItsEndArrives) {
    const QByteArray line = "PERCENT:42.5\n";
    for (qsizetype cut = 1; cut < line.size(); ++cut) {
        ProgressLines lines;
        EXPECT_THAT(lines.append(line.first(cut)), IsEmpty()) << cut;
        EXPECT_THAT(lines.append(line.sliced(cut)), ElementsAre(0.425)) << cut;
    }
}

TEST(ProgressLinesTest, ALineEndThatIsCutInTwoEndsOneLine) {
    ProgressLines lines;
    EXPECT_THAT(lines.append("PERCENT:25\r"), ElementsAre(0.25));
    EXPECT_THAT(lines.append("\nPERCENT:50\r\n"), ElementsAre(0.5));
}

TEST(ProgressLinesTest, AFinalLineWithoutAnEndIsNeverRead) {
    ProgressLines lines;
    EXPECT_THAT(lines.append("PERCENT:25\nPERCENT:50"), ElementsAre(0.25));
    EXPECT_THAT(lines.append(""), IsEmpty());
}

TEST(ProgressLinesTest, AChunkThatIsNotUtf8IsDroppedWhole) {
    ProgressLines lines;
    EXPECT_THAT(lines.append("PERCENT:25\n\xFF"), IsEmpty());
    EXPECT_THAT(lines.append("PERCENT:50\n"), ElementsAre(0.5));
}

TEST(ProgressLinesTest, AChunkThatEndsInsideACharacterIsDroppedWhole) {
    ProgressLines lines;
    EXPECT_THAT(lines.append("PERCENT:25\nM\xC3"), IsEmpty());
    EXPECT_THAT(lines.append("\xBC"
                             "PERCENT:30\n"),
                IsEmpty());
    EXPECT_THAT(lines.append("PERCENT:50\n"), ElementsAre(0.5));
}

TEST(ProgressLinesTest, ADroppedChunkLeavesTheBegunLineAsItWas) {
    ProgressLines lines;
    EXPECT_THAT(lines.append("PERCENT:4"), IsEmpty());
    EXPECT_THAT(lines.append("9\xFF"), IsEmpty());
    EXPECT_THAT(lines.append("2\n"), ElementsAre(0.42));
}

TEST(ProgressLinesTest, AByteOrderMarkIsPartOfItsLine) {
    EXPECT_THAT(of("\xEF\xBB\xBFPERCENT:42\n"), ElementsAre(0.42));
    ProgressLines lines;
    EXPECT_THAT(lines.append("PERCENT:4"), IsEmpty());
    EXPECT_THAT(lines.append("\xEF\xBB\xBF"
                             "2\n"),
                IsEmpty());
}

TEST(ProgressLinesTest, AVeryLongLineStillEnds) {
    ProgressLines lines;
    const QByteArray noise(40'000, 'x');
    for (int i = 0; i < 100; ++i) {
        EXPECT_THAT(lines.append(noise), IsEmpty());
    }
    EXPECT_THAT(lines.append("PERC"), IsEmpty());
    EXPECT_THAT(lines.append("ENT:42\nPERCENT:50\n"), ElementsAre(0.42, 0.5));
}

TEST(ProgressLinesTest, AMarkerInAVeryLongLineIsFound) {
    ProgressLines lines;
    EXPECT_THAT(lines.append(QByteArray(70'000, 'x') + "PERC"), IsEmpty());
    EXPECT_THAT(lines.append("ENT:42\n"), ElementsAre(0.42));
    EXPECT_THAT(lines.append(QByteArray(70'000, 'x') + "PERCENT:4"), IsEmpty());
    EXPECT_THAT(lines.append("3\n"), ElementsAre(0.43));
}

TEST(ProgressLinesTest, AnEndlessNumberIsNone) {
    ProgressLines lines;
    EXPECT_THAT(lines.append("PERCENT:"), IsEmpty());
    for (int i = 0; i < 10; ++i) {
        EXPECT_THAT(lines.append(QByteArray(40'000, '1')), IsEmpty());
    }
    EXPECT_THAT(lines.append("\nPERCENT:50\n"), ElementsAre(0.5));
}

TEST(ProgressLinesTest, TheNumberIsReadAlikeInEveryLocale) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_THAT(of("PERCENT:42.5\nPERCENT:42,5\n"), ElementsAre(0.425));
    QLocale::setDefault(before);
}

}  // namespace
