// The parsers of "drutil status", fed with reports.
#include <gmock/gmock.h>

#include "DriveStatus.h"

namespace {

using DriveStatus::DiscLine;
using DriveStatus::parseDriveIdentity;
using DriveStatus::parseStatus;

constexpr const char* withDisc =
    " Vendor   Product           Rev \n"
    " PIONEER  BD-RW   BDR-209D  1.10\n"
    "\n"
    "           Type: DVD+R DL             Name: /dev/disk4\n"
    "       Sessions: 1                  Tracks: 1 \n"
    "   Overwritable:   00:00:00         blocks:        0 /   0.00MB /   0.00MiB\n"
    "     Space Free:   00:00:00         blocks:        0 /   0.00MB /   0.00MiB\n"
    "    Writability: \n";

constexpr const char* withoutDisc =
    " Vendor   Product           Rev \n"
    " HL-DT-ST DVDRAM GP60NB60   RF01\n"
    "\n"
    "           Type: No Media Inserted\n";

std::optional<DiscLine> status(const char* text) {
    return parseStatus(QString::fromUtf8(text));
}

DiscLine line(const char* type, const char* name) {
    return {QString::fromUtf8(type), QString::fromUtf8(name)};
}

std::optional<DriveIdentity> identity(const std::string& text) {
    return parseDriveIdentity(QString::fromStdString(text));
}

DriveIdentity fields(const char* vendor, const char* product, const char* revision) {
    return {QString::fromUtf8(vendor), QString::fromUtf8(product), QString::fromUtf8(revision)};
}

// A report of a header and the values line under it.
std::optional<DriveIdentity> values(const std::string& text) {
    return identity("Vendor   Product           Rev \n" + text + "\n");
}

TEST(ParseStatusTest, TypeAndDeviceComeFromTheStatusLine) {
    EXPECT_EQ(status(withDisc), line("DVD+R DL", "disk4"));
}

TEST(ParseStatusTest, AReportWithoutAMediumHasNoDisc) {
    EXPECT_EQ(status(withoutDisc), std::nullopt);
}

TEST(ParseStatusTest, AnEmptyReportHasNoDisc) {
    EXPECT_EQ(status(""), std::nullopt);
    EXPECT_EQ(status("\n\n\n"), std::nullopt);
}

TEST(ParseStatusTest, BothTitlesMustStandOnOneLine) {
    EXPECT_EQ(status("Type: CD-ROM\nName: /dev/disk4\n"), std::nullopt);
}

TEST(ParseStatusTest, TitlesAreCaseSensitive) {
    EXPECT_EQ(status("type: CD-ROM Name: /dev/disk4"), std::nullopt);
    EXPECT_EQ(status("Type: CD-ROM name: /dev/disk4"), std::nullopt);
    EXPECT_EQ(status("TYPE: CD-ROM NAME: /dev/disk4"), std::nullopt);
}

TEST(ParseStatusTest, TheFirstLineWithBothTitlesDecides) {
    EXPECT_EQ(status("Type: x\nType: CD-R Name: /dev/disk4\nType: BD-R Name: /dev/disk5"),
              line("CD-R", "disk4"));
    EXPECT_EQ(status("Type: none Name: /dev/disk4\nType: BD-R Name: /dev/disk5"), std::nullopt);
    EXPECT_EQ(status("Type: CD-R Name: disk4\nType: BD-R Name: /dev/disk5"), std::nullopt);
    EXPECT_EQ(status("Name: a Type: b\nType: BD-R Name: /dev/disk5"), std::nullopt);
}

TEST(ParseStatusTest, TheFirstOfEachTitleOnTheLineCounts) {
    EXPECT_EQ(status("Type: Type: CD Name: /dev/disk4 Name: x"), line("Type: CD", "disk4 Name: x"));
    EXPECT_EQ(status("Type: CD Name: /dev/disk4 Type: DVD"), line("CD", "disk4 Type: DVD"));
}

TEST(ParseStatusTest, TitlesMayBePartsOfLongerWords) {
    EXPECT_EQ(status("MediaType:CD-ROM BSDName:/dev/disk4"), line("CD-ROM BSD", "disk4"));
}

TEST(ParseStatusTest, ANameBeforeTheTypeIsNoDisc) {
    EXPECT_EQ(status("Name: /dev/disk4 Type: CD-ROM"), std::nullopt);
    EXPECT_EQ(status("Name: /dev/disk4 Type: CD-ROM Name: /dev/disk4"), std::nullopt);
}

TEST(ParseStatusTest, ATypeWithInnerBlanksIsKeptWhole) {
    EXPECT_EQ(status("Type:  DVD+R \t DL  Name: /dev/disk4"), line("DVD+R \t DL", "disk4"));
}

TEST(ParseStatusTest, BlanksAndTabsAtTheEndsAreTrimmed) {
    EXPECT_EQ(status("Type:\t \tCD-R\t Name: \t/dev/disk4 \t"), line("CD-R", "disk4"));
}

TEST(ParseStatusTest, OtherSpacesAreNotTrimmed) {
    EXPECT_EQ(status("Type:\u00a0CD-R\u2003Name:/dev/disk4\u00a0"),
              line("\u00a0CD-R\u2003", "disk4\u00a0"));
    EXPECT_EQ(status("Type: CD-R Name:\u00a0/dev/disk4"), std::nullopt);
}

TEST(ParseStatusTest, LinesEndAtLineFeedsOnly) {
    EXPECT_EQ(status("Type: CD-R\rName: /dev/disk4"), line("CD-R\r", "disk4"));
    EXPECT_EQ(status("Type: CD-R Name: /dev/disk4\r\nnext"), line("CD-R", "disk4\r"));
}

TEST(ParseStatusTest, AnEmptyTypeIsNoDisc) {
    EXPECT_EQ(status("Type:Name: /dev/disk4"), std::nullopt);
    EXPECT_EQ(status("Type: \t Name: /dev/disk4"), std::nullopt);
}

TEST(ParseStatusTest, ATypeOfNoneInAnyCaseMeansNoDisc) {
    for (const char* text : {"Type: None Name: /dev/disk4", "Type: none Name: /dev/disk4",
                             "Type: NONE Name: /dev/disk4", "Type:nOnE\tName: /dev/disk4"}) {
        EXPECT_EQ(status(text), std::nullopt) << text;
    }
}

TEST(ParseStatusTest, ATypeThatOnlyContainsNoneIsADisc) {
    EXPECT_EQ(status("Type: Nonesuch Name: /dev/disk4"), line("Nonesuch", "disk4"));
    EXPECT_EQ(status("Type: n one Name: /dev/disk4"), line("n one", "disk4"));
}

TEST(ParseStatusTest, ANameThatIsNoDevicePathMeansNoDisc) {
    for (const char* text :
         {"Type: CD-R Name: disk4", "Type: CD-R Name:", "Type: CD-R Name: dev/x",
          "Type: CD-R Name: /Dev/x", "Type: CD-R Name: x /dev/disk4", "Type: CD-R Name: /dev"}) {
        EXPECT_EQ(status(text), std::nullopt) << text;
    }
}

TEST(ParseStatusTest, OnlyTheFirstDevicePrefixIsTakenOff) {
    EXPECT_EQ(status("Type: CD-R Name: /dev//dev/disk4"), line("CD-R", "/dev/disk4"));
    EXPECT_EQ(status("Type: CD-R Name: /dev/"), line("CD-R", ""));
}

TEST(ParseStatusTest, TheTypeKeepsItsLetterCase) {
    EXPECT_EQ(status("Type: dvd-Rom Name: /dev/disk4"), line("dvd-Rom", "disk4"));
}

TEST(ParseStatusTest, AReportThatIsCutAnywhereNeverNamesAnotherDevice) {
    const QString whole = QString::fromUtf8(withDisc);
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const auto part = parseStatus(whole.left(length));
        if (part) {
            EXPECT_EQ(part->rawType, QStringLiteral("DVD+R DL"));
            EXPECT_TRUE(QStringLiteral("disk4").startsWith(part->bsdName));
        }
    }
}

TEST(ParseDriveIdentityTest, TheValuesStandUnderTheirTitles) {
    EXPECT_EQ(identity(withDisc), fields("PIONEER", "BD-RW   BDR-209D", "1.10"));
}

TEST(ParseDriveIdentityTest, AProductOfSeveralWordsStaysWhole) {
    EXPECT_EQ(identity(withoutDisc), fields("HL-DT-ST", "DVDRAM GP60NB60", "RF01"));
}

TEST(ParseDriveIdentityTest, AVendorOfSeveralWordsStaysWhole) {
    EXPECT_EQ(values("A B C    Drive             1.0 "), fields("A B C", "Drive", "1.0"));
}

TEST(ParseDriveIdentityTest, WithoutAHeaderThereIsNoIdentity) {
    EXPECT_EQ(identity(""), std::nullopt);
    EXPECT_EQ(identity("Vendor Product\nA B C\n"), std::nullopt);
    EXPECT_EQ(identity("Vendor Rev\nA B C\n"), std::nullopt);
    EXPECT_EQ(identity("Product Rev\nA B C\n"), std::nullopt);
    EXPECT_EQ(identity("vendor product rev\nA B C\n"), std::nullopt);
    EXPECT_EQ(identity("Vendor\nProduct\nRev\nA\n"), std::nullopt);
}

TEST(ParseDriveIdentityTest, AHeaderAtTheVeryEndHasNoIdentity) {
    EXPECT_EQ(identity("Vendor   Product           Rev "), std::nullopt);
    EXPECT_EQ(identity("first\nVendor Product Rev"), std::nullopt);
}

TEST(ParseDriveIdentityTest, TheLineRightAfterTheHeaderHasTheValuesEvenWhenEmpty) {
    EXPECT_EQ(identity("Vendor   Product           Rev \n\nPIONEER  BD-RW             1.10\n"),
              std::nullopt);
    EXPECT_EQ(identity("Vendor Product Rev\n"), std::nullopt);
}

TEST(ParseDriveIdentityTest, TheFirstHeaderDecides) {
    EXPECT_EQ(identity("Vendor Product Rev\na      b       c\nVendor Product Rev\nx y z"),
              fields("a", "b", "c"));
}

TEST(ParseDriveIdentityTest, LinesBeforeTheHeaderAreSkipped) {
    EXPECT_EQ(identity("warning\n\nVendor Product Rev\na      b       c"), fields("a", "b", "c"));
}

TEST(ParseDriveIdentityTest, TheHeaderMayHoldOtherTitles) {
    EXPECT_EQ(identity("No Vendor   Product Serial Revision Bus\n1  PIONEER  BD-RW   77     1.10"
                       "     ATA\n"),
              fields("PIONEER", "BD-RW   77", "1.10     ATA"));
}

TEST(ParseDriveIdentityTest, TheFirstOfEachTitleGivesTheColumn) {
    EXPECT_EQ(
        identity("Vendor Product Rev Vendor Product Rev\na      b       c   d      e       f"),
        fields("a", "b", "c   d      e       f"));
}

TEST(ParseDriveIdentityTest, AShortValuesLineLeavesTheLaterFieldsEmpty) {
    EXPECT_EQ(values("PIONEER  BD-RW"), fields("PIONEER", "BD-RW", ""));
    EXPECT_EQ(values("PIONEER  BD-RW             1"), fields("PIONEER", "BD-RW", "1"));
    EXPECT_EQ(values("PIONEER"), fields("PIONEER", "", ""));
    EXPECT_EQ(values("P"), fields("P", "", ""));
    EXPECT_EQ(values("PIONEER  "), fields("PIONEER", "", ""));
}

TEST(ParseDriveIdentityTest, WithoutAVendorThereIsNoIdentity) {
    EXPECT_EQ(values(""), std::nullopt);
    EXPECT_EQ(values("         BD-RW             1.10"), std::nullopt);
    EXPECT_EQ(values(" \t "), std::nullopt);
    EXPECT_EQ(identity("     Vendor Product Rev\nABC\n"), std::nullopt);
}

TEST(ParseDriveIdentityTest, FieldsAreTrimmedOfBlanksAndTabsOnly) {
    EXPECT_EQ(values("\tAB \t   \tDrive\t\t          \t1.0\t"), fields("AB", "Drive", "1.0"));
    EXPECT_EQ(values("\u00a0AB      Drive             1.0\r"),
              fields("\u00a0AB", "Drive", "1.0\r"));
}

TEST(ParseDriveIdentityTest, CarriageReturnsAtLineEndsMoveNoColumn) {
    EXPECT_EQ(identity("Vendor   Product           Rev \r\nPIONEER  BD-RW             1.10\r\n"),
              fields("PIONEER", "BD-RW", "1.10\r"));
}

TEST(ParseDriveIdentityTest, ColumnsAreCountedInPerceivedCharacters) {
    // Each word is seven characters wide to the eye, and longer in bytes or code units.
    for (const char* vendor :
         {"\u00c9\u00c9\u00c9\u00c9\u00c9\u00c9\u00c9", "E\u0301E\u0301E\u0301E\u0301abc",
          "\U0001F4BF\U0001F4BF\U0001F4BFabcd", "\U0001F468\u200D\U0001F469\u200D\U0001F467abcdef",
          "\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7abcde", "\u1112\u1161\u11ababcdef",
          "\u0928\u093fabcdef", "\U0001F44D\U0001F3FDabcdef",
          "\u0E01\U0001F4BF\u0928\U0001F4BF\u0F40\U0001F4BFa"}) {
        EXPECT_EQ(values(std::string(vendor) + "  Drive             1.0 "),
                  fields(vendor, "Drive", "1.0"))
            << vendor;
    }
}

TEST(ParseDriveIdentityTest, TheHeadersColumnsAreCountedInPerceivedCharactersToo) {
    EXPECT_EQ(identity("\U0001F4BFe\u0301 Vendor Product Rev\nxx abc    def     ghi"),
              fields("abc", "def", "ghi"));
}

TEST(ParseDriveIdentityTest, TitlesInAnotherOrderLeaveNothingBetweenThem) {
    // The vendor's piece would end before it begins.
    EXPECT_EQ(identity("Product Vendor Rev\nb       a      c"), std::nullopt);
    // The product's would.
    EXPECT_EQ(identity("Vendor Rev Product\na      c   b"), fields("a      c", "", "c   b"));
}

}  // namespace
