#include "DiscType.h"

#include <algorithm>
#include <array>

namespace {

struct Profile {
    std::uint16_t number;
    std::string_view name;
};

constexpr std::array<Profile, 29> profiles = {{
    {0x03, "MO"},           {0x04, "MO"},         {0x05, "MO"},        {0x08, "CD-ROM"},
    {0x09, "CD-R"},         {0x0A, "CD-RW"},      {0x10, "DVD-ROM"},   {0x11, "DVD-R"},
    {0x12, "DVD-RAM"},      {0x13, "DVD-RW"},     {0x14, "DVD-RW"},    {0x15, "DVD-R DL"},
    {0x16, "DVD-R DL"},     {0x17, "DVD-RW DL"},  {0x18, "DVD-R DL"},  {0x1A, "DVD+RW"},
    {0x1B, "DVD+R"},        {0x2A, "DVD+RW DL"},  {0x2B, "DVD+R DL"},  {0x40, "BD-ROM"},
    {0x41, "BD-R"},         {0x42, "BD-R"},       {0x43, "BD-RE"},     {0x50, "HD DVD-ROM"},
    {0x51, "HD DVD-R"},     {0x52, "HD DVD-RAM"}, {0x53, "HD DVD-RW"}, {0x58, "HD DVD-R DL"},
    {0x5A, "HD DVD-RW DL"},
}};

struct Flag {
    std::string_view flag;
    std::string_view name;
};

constexpr std::array<Flag, 34> flags = {{
    {"MO", "MO"},
    {"CD", "CD-ROM"},
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
    {"DVD_R_DDR", "DVD-R DL"},
    {"DVD_RW_DL", "DVD-RW DL"},
    {"DVD_PLUS_R", "DVD+R"},
    {"DVD_PLUS_RW", "DVD+RW"},
    {"DVD_PLUS_R_DL", "DVD+R DL"},
    {"DVD_PLUS_RW_DL", "DVD+RW DL"},
    {"BD", "BD-ROM"},
    {"BD_ROM", "BD-ROM"},
    {"BD_R", "BD-R"},
    {"BD_R_SRM", "BD-R"},
    {"BD_R_RRM", "BD-R"},
    {"BD_RE", "BD-RE"},
    {"HDDVD", "HD DVD-ROM"},
    {"HDDVD_R", "HD DVD-R"},
    {"HDDVD_RAM", "HD DVD-RAM"},
    {"HDDVD_RW", "HD DVD-RW"},
    {"HDDVD_R_DL", "HD DVD-R DL"},
    {"HDDVD_RW_DL", "HD DVD-RW DL"},
    {"CD_ROM", "CD-ROM"},
    {"DVD_ROM", "DVD-ROM"},
    {"HDDVD_ROM", "HD DVD-ROM"},
}};

}  // namespace

std::string_view DiscType::ofProfile(std::uint16_t profile) {
    const auto* found = std::find_if(profiles.begin(), profiles.end(),
                                     [profile](const auto& row) { return row.number == profile; });
    return found == profiles.end() ? "Unknown" : found->name;
}

std::string_view DiscType::ofSize(std::uint64_t bytes) {
    if (bytes <= 900'000'000ULL) {
        return "CD-ROM";
    }
    return bytes <= 9'000'000'000ULL ? "DVD-ROM" : "BD-ROM";
}

std::string_view DiscType::ofUdevFlag(std::string_view flag) {
    const auto* found = std::find_if(flags.begin(), flags.end(),
                                     [flag](const auto& row) { return row.flag == flag; });
    return found == flags.end() ? std::string_view() : found->name;
}
