#include "DiscType.h"

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <string>

namespace {

TEST(DiscTypeTest, EveryProfileHasItsName) {
    const std::map<std::uint16_t, std::string> expected = {
        {0x08, "CD-ROM"},      {0x09, "CD-R"},       {0x0A, "CD-RW"},     {0x10, "DVD-ROM"},
        {0x11, "DVD-R"},       {0x12, "DVD-RAM"},    {0x13, "DVD-RW"},    {0x14, "DVD-RW"},
        {0x15, "DVD-R DL"},    {0x16, "DVD-R DL"},   {0x17, "DVD-RW DL"}, {0x1A, "DVD+RW"},
        {0x1B, "DVD+R"},       {0x2A, "DVD+RW DL"},  {0x2B, "DVD+R DL"},  {0x40, "BD-ROM"},
        {0x41, "BD-R"},        {0x42, "BD-R"},       {0x43, "BD-RE"},     {0x50, "HD DVD-ROM"},
        {0x51, "HD DVD-R"},    {0x52, "HD DVD-RAM"}, {0x53, "HD DVD-RW"}, {0x58, "HD DVD-R DL"},
        {0x5A, "HD DVD-RW DL"}};
    for (const auto& [profile, name] : expected) {
        EXPECT_EQ(DiscType::ofProfile(profile), name) << profile;
    }
}

TEST(DiscTypeTest, AProfileThatNoTableListsIsUnknown) {
    EXPECT_EQ(DiscType::ofProfile(0x00), "Unknown");
    EXPECT_EQ(DiscType::ofProfile(0x44), "Unknown");
    EXPECT_EQ(DiscType::ofProfile(0xFFFF), "Unknown");
}

TEST(DiscTypeTest, EveryFlagOfTheDeviceManagerHasItsName) {
    const std::map<std::string, std::string> expected = {{"CD", "CD-ROM"},
                                                         {"CD_R", "CD-R"},
                                                         {"CD_RW", "CD-RW"},
                                                         {"DVD", "DVD-ROM"},
                                                         {"DVD_R", "DVD-R"},
                                                         {"DVD_RAM", "DVD-RAM"},
                                                         {"DVD_RW", "DVD-RW"},
                                                         {"DVD_RW_RO", "DVD-RW"},
                                                         {"DVD_RW_SEQ", "DVD-RW"},
                                                         {"DVD_R_DL", "DVD-R DL"},
                                                         {"DVD_R_DL_SEQ", "DVD-R DL"},
                                                         {"DVD_R_DL_JR", "DVD-R DL"},
                                                         {"DVD_PLUS_R", "DVD+R"},
                                                         {"DVD_PLUS_RW", "DVD+RW"},
                                                         {"DVD_PLUS_R_DL", "DVD+R DL"},
                                                         {"DVD_PLUS_RW_DL", "DVD+RW DL"},
                                                         {"BD", "BD-ROM"},
                                                         {"BD_R", "BD-R"},
                                                         {"BD_R_SRM", "BD-R"},
                                                         {"BD_R_RRM", "BD-R"},
                                                         {"BD_RE", "BD-RE"},
                                                         {"HDDVD", "HD DVD-ROM"},
                                                         {"HDDVD_R", "HD DVD-R"},
                                                         {"HDDVD_RAM", "HD DVD-RAM"},
                                                         {"HDDVD_RW", "HD DVD-RW"},
                                                         {"HDDVD_R_DL", "HD DVD-R DL"},
                                                         {"HDDVD_RW_DL", "HD DVD-RW DL"}};
    for (const auto& [flag, name] : expected) {
        EXPECT_EQ(DiscType::ofUdevFlag(flag), name) << flag;
    }
}

TEST(DiscTypeTest, PropertiesThatAreNoTypeFlagHaveNoName) {
    for (const char* other : {"STATE", "SESSION_COUNT", "TRACK_COUNT_AUDIO", "", "cd"}) {
        EXPECT_EQ(DiscType::ofUdevFlag(other), "") << other;
    }
}

TEST(DiscTypeTest, ASizeAloneGivesTheSmallestKindThatHoldsIt) {
    EXPECT_EQ(DiscType::ofSize(0), "CD-ROM");
    EXPECT_EQ(DiscType::ofSize(900'000'000), "CD-ROM");
    EXPECT_EQ(DiscType::ofSize(900'000'001), "DVD-ROM");
    EXPECT_EQ(DiscType::ofSize(9'000'000'000), "DVD-ROM");
    EXPECT_EQ(DiscType::ofSize(9'000'000'001), "BD-ROM");
}

}  // namespace
