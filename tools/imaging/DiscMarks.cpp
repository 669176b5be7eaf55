#include "DiscMarks.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "UncachedFile.h"

namespace {

constexpr std::size_t sectorBytes = Mmc::dataSectorBytes;

struct Area {
    std::size_t sector;
    std::size_t sectors;
};
// The volume descriptors with what usually follows them, which has dates to a hundredth of a
// second; UDF's anchor.
constexpr std::array areas{Area{16, 32}, Area{256, 1}};

// Whether one of the sectors is a volume descriptor of ISO 9660 or UDF.
bool hasFileSystem(const std::vector<std::byte>& descriptors) {
    constexpr std::array<std::string_view, 3> names{"CD001", "NSR02", "NSR03"};
    for (std::size_t at = 1; at + sectorBytes <= descriptors.size() + 1; at += sectorBytes) {
        const std::string_view name(reinterpret_cast<const char*>(&descriptors[at]), 5);
        if (std::ranges::find(names, name) != names.end()) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::optional<DiscMarks> DiscMarks::in(std::span<const std::byte> beginning,
                                       std::uint64_t deviceBytes) {
    DiscMarks marks{deviceBytes, {}};
    for (const Area& area : areas) {
        const auto from = std::min(area.sector * sectorBytes, beginning.size());
        const auto content =
            beginning.subspan(from, std::min(area.sectors * sectorBytes, beginning.size() - from));
        marks.descriptors.insert(marks.descriptors.end(), content.begin(), content.end());
    }
    return hasFileSystem(marks.descriptors) ? std::optional(std::move(marks)) : std::nullopt;
}

std::optional<DiscMarks> DiscMarks::of(const std::string& device, std::uint64_t firstSector) {
    const auto file = UncachedFile::open(device);
    const off_t end = file ? lseek(file->descriptor(), 0, SEEK_END) : -1;
    if (end <= 0) {
        return std::nullopt;
    }
    std::vector<std::byte> beginning(beginningBytes);
    std::size_t got = 0;
    if (file->read(firstSector * sectorBytes, beginning, &got) != 0) {
        return std::nullopt;
    }
    return in(std::span(beginning).first(got), static_cast<std::uint64_t>(end));
}
