#include <gmock/gmock.h>

#include "DiskReports.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

DriveFacts drive() {
    DriveFacts facts;
    facts.node = "sr0";
    facts.vendor = "HL-DT-ST";
    facts.product = "DVDRAM GP65NB60";
    facts.revision = "RF00";
    facts.disc = DiscFacts{"DVD+R DL", "My Disc", 8'543'666'176, false, false};
    return facts;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::size_t start = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         start = end + 1, end = text.find('\n', start)) {
        result.push_back(text.substr(start, end - start));
    }
    return result;
}

TEST(DiskReportsTest, AnUnknownSizeIsLeftOut) {
    DiscFacts disc = *drive().disc;
    disc.bytes.reset();
    EXPECT_THAT(DiskReports::info("sr0", disc), Not(HasSubstr("Size")));
    EXPECT_THAT(DiskReports::info("sr0", disc), HasSubstr("My Disc"));
    EXPECT_THAT(DiskReports::table("sr0", disc), EndsWith(" -   sr0\n"));
}

TEST(DiskReportsTest, TheInformationHoldsAllItsKeys) {
    const std::string text = DiskReports::info("sr0", *drive().disc);
    EXPECT_THAT(text, HasSubstr("<key>DeviceIdentifier</key>\n\t<string>sr0</string>"));
    EXPECT_THAT(text, HasSubstr("<key>DeviceNode</key>\n\t<string>/dev/sr0</string>"));
    EXPECT_THAT(text, HasSubstr("<key>VolumeName</key>\n\t<string>My Disc</string>"));
    EXPECT_THAT(text, HasSubstr("<key>TotalSize</key>\n\t<integer>8543666176</integer>"));
    EXPECT_THAT(text, HasSubstr("<key>Size</key>\n\t<integer>8543666176</integer>"));
}

TEST(DiskReportsTest, ADiscWithoutANameHasAnEmptyOneAndNoVolumes) {
    DiscFacts disc = *drive().disc;
    disc.volumeName.clear();
    EXPECT_THAT(DiskReports::info("sr0", disc),
                HasSubstr("<key>VolumeName</key>\n\t<string></string>"));
    EXPECT_THAT(DiskReports::list("sr0", disc),
                HasSubstr("<key>VolumesFromDisks</key>\n\t<array/>"));
}

TEST(DiskReportsTest, TheListNamesTheWholeDiscAndItsVolume) {
    const std::string text = DiskReports::list("sr0", *drive().disc);
    EXPECT_THAT(text,
                HasSubstr("<key>AllDisks</key>\n\t<array>\n\t\t<string>sr0</string>\n\t</array>"));
    EXPECT_THAT(text, HasSubstr("<key>VolumesFromDisks</key>\n\t<array>\n\t\t<string>My "
                                "Disc</string>\n\t</array>"));
}

TEST(DiskReportsTest, TheTableHasOneRowWhoseLastWordIsTheWholeDisc) {
    const auto rows = lines(DiskReports::table("sr0", *drive().disc));
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_THAT(rows[2], EndsWith(" sr0"));
    EXPECT_THAT(rows[2], HasSubstr("My Disc"));
    EXPECT_THAT(rows[2], HasSubstr("8.5 GB"));
}

TEST(DiskReportsTest, NoNameCanMakeALineThatEndsLikeASlice) {
    DiscFacts disc = *drive().disc;
    for (const char* name : {"x\nsr0s1", "x sr0s1", "x\xE2\x80\xA8sr0s1", "\r\nsr0s9\n"}) {
        disc.volumeName = name;
        const auto rows = lines(DiskReports::table("sr0", disc));
        ASSERT_EQ(rows.size(), 3U) << name;
        EXPECT_THAT(rows[2], EndsWith(" sr0")) << name;
    }
}

TEST(DiskReportsTest, ANameIsOneHarmlessLineInEveryReport) {
    DiscFacts disc = *drive().disc;
    disc.volumeName =
        "a\nb\tc\x7F"
        "d\xC2\x9B"
        "e\xE2\x80\xAE"
        "f";
    for (const auto& text : {DiskReports::info("sr0", disc), DiskReports::list("sr0", disc),
                             DiskReports::table("sr0", disc)}) {
        EXPECT_THAT(text, HasSubstr("a b c d e f"));
    }
}

TEST(DiskReportsTest, SizesAreDecimalAndRoundToTenths) {
    EXPECT_EQ(DiskReports::sizeText(0), "0 bytes");
    EXPECT_EQ(DiskReports::sizeText(999), "999 bytes");
    EXPECT_EQ(DiskReports::sizeText(1000), "1.0 kB");
    EXPECT_EQ(DiskReports::sizeText(1049), "1.0 kB");
    EXPECT_EQ(DiskReports::sizeText(1050), "1.1 kB");
    EXPECT_EQ(DiskReports::sizeText(999'949), "999.9 kB");
    EXPECT_EQ(DiskReports::sizeText(999'950), "1.0 MB");
    EXPECT_EQ(DiskReports::sizeText(700'000'000), "700.0 MB");
    EXPECT_EQ(DiskReports::sizeText(18446744073709551615U), "18446.7 PB");
}

}  // namespace
