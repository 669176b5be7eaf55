#include "DiscType.h"

#include <algorithm>
#include <array>

#include "Mmc.h"

namespace {

namespace Profile = Mmc::Profile;

struct ProfileName {
    std::uint16_t number;
    std::string_view name;
};

constexpr std::array<ProfileName, 29> profiles = {{
    {Profile::moErasable, "MO"},
    {Profile::moWriteOnce, "MO"},
    {Profile::asMo, "MO"},
    {Profile::cdRom, "CD-ROM"},
    {Profile::cdR, "CD-R"},
    {Profile::cdRw, "CD-RW"},
    {Profile::dvdRom, "DVD-ROM"},
    {Profile::dvdR, "DVD-R"},
    {Profile::dvdRam, "DVD-RAM"},
    {Profile::dvdRwRestrictedOverwrite, "DVD-RW"},
    {Profile::dvdRwSequential, "DVD-RW"},
    {Profile::dvdRDlSequential, "DVD-R DL"},
    {Profile::dvdRDlLayerJump, "DVD-R DL"},
    {Profile::dvdRwDl, "DVD-RW DL"},
    {Profile::dvdDownload, "DVD-R DL"},
    {Profile::dvdPlusRw, "DVD+RW"},
    {Profile::dvdPlusR, "DVD+R"},
    {Profile::dvdPlusRwDl, "DVD+RW DL"},
    {Profile::dvdPlusRDl, "DVD+R DL"},
    {Profile::bdRom, "BD-ROM"},
    {Profile::bdRSequential, "BD-R"},
    {Profile::bdRRandom, "BD-R"},
    {Profile::bdRe, "BD-RE"},
    {Profile::hdDvdRom, "HD DVD-ROM"},
    {Profile::hdDvdR, "HD DVD-R"},
    {Profile::hdDvdRam, "HD DVD-RAM"},
    {Profile::hdDvdRw, "HD DVD-RW"},
    {Profile::hdDvdRDl, "HD DVD-R DL"},
    {Profile::hdDvdRwDl, "HD DVD-RW DL"},
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
