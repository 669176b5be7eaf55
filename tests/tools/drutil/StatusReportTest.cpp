#include <gmock/gmock.h>

#include "StatusReport.h"

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

TEST(StatusReportTest, ADriveWithADiscIsATableABlankLineAndTheDiscsLine) {
    EXPECT_EQ(StatusReport::text(drive()),
              " Vendor   Product           Rev \n"
              " HL-DT-ST DVDRAM GP65NB60   RF00\n"
              "\n"
              "           Type: DVD+R DL              Name: /dev/sr0\n");
}

TEST(StatusReportTest, AnEmptyTrayNamesNoDevice) {
    DriveFacts facts = drive();
    facts.disc.reset();
    const std::string report = StatusReport::text(facts);
    EXPECT_THAT(report, EndsWith("\n\n           Type: No Media Inserted\n"));
    EXPECT_THAT(report, Not(HasSubstr("Name:")));
}

TEST(StatusReportTest, ValuesStandUnderTheirHeadersHoweverLongOrShortTheyAre) {
    DriveFacts facts = drive();
    facts.vendor = "A";
    facts.product = "A product name that is much too long";
    facts.revision = "";
    const auto rows = lines(StatusReport::text(facts));
    EXPECT_EQ(rows[0].find("Product"), rows[1].find("A product"));
    EXPECT_EQ(rows[1], " A        A product name t      ");
}

TEST(StatusReportTest, EveryByteThatIsNotPrintableAsciiIsOneBlank) {
    DriveFacts facts = drive();
    facts.vendor = "\xE6\x97\xA5~1";
    facts.product = std::string("A\0B\x7F\xFF\nC", 7);
    facts.revision = "1\xC2\x85\xCC\x81";
    EXPECT_EQ(lines(StatusReport::text(facts))[1], "    ~1    A B   C           1   ");
    facts = drive();
    for (int byte = 0; byte < 256; ++byte) {
        facts.vendor = std::string(1, static_cast<char>(byte)) + "X";
        const auto rows = lines(StatusReport::text(facts));
        ASSERT_EQ(rows.size(), 4U) << byte;
        const char shown = byte > ' ' && byte <= '~' ? static_cast<char>(byte) : ' ';
        EXPECT_EQ(rows[1], std::string(" ") + shown + "X       DVDRAM GP65NB60   RF00") << byte;
    }
}

TEST(StatusReportTest, ALongTypeStaysWholeAndApartFromTheName) {
    DriveFacts facts = drive();
    facts.disc->type = "A type of many characters";
    EXPECT_THAT(StatusReport::text(facts),
                HasSubstr("Type: A type of many characters Name: /dev/sr0\n"));
}

TEST(StatusReportTest, ALineEndInAnyTextMakesNoLine) {
    DriveFacts facts = drive();
    facts.vendor = "A\nB";
    facts.disc->type = "CD\nType: X Name: /dev/sda";
    EXPECT_EQ(lines(StatusReport::text(facts)).size(), 4U);
}

TEST(StatusReportTest, ADriveCannotCallItselfADisc) {
    DriveFacts facts = drive();
    facts.vendor = "Type: CD";
    facts.product = "Name: /dev/sda";
    const auto rows = lines(StatusReport::text(facts));
    EXPECT_EQ(rows[1], " Type  CD Name  /dev/sda    RF00");
    facts.product = "At 3:1";
    EXPECT_EQ(lines(StatusReport::text(facts))[1], " Type: CD At 3:1            RF00");
}

}  // namespace
