#include "DiskReports.h"

#include <array>
#include <string_view>
#include <vector>

#include "PropertyListWriter.h"
#include "Utf8.h"

namespace {

// At least this wide; longer texts move what follows and lose nothing.
std::string padded(std::string_view text, std::size_t width) {
    return Utf8::padded(Utf8::oneLine(text), width);
}

std::string paddedLeft(const std::string& text, std::size_t width) {
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace

std::string DiskReports::info(const std::string& node, const DiscFacts& disc) {
    PropertyListWriter list;
    list.add("DeviceIdentifier", node);
    list.add("DeviceNode", "/dev/" + node);
    list.add("VolumeName", Utf8::oneLine(disc.volumeName));
    if (disc.bytes) {
        list.add("TotalSize", *disc.bytes);
        list.add("Size", *disc.bytes);
    }
    return list.text();
}

std::string DiskReports::list(const std::string& node, const DiscFacts& disc) {
    PropertyListWriter list;
    list.add("AllDisks", std::vector<std::string>{node});
    list.add("VolumesFromDisks", disc.volumeName.empty()
                                     ? std::vector<std::string>()
                                     : std::vector<std::string>{Utf8::oneLine(disc.volumeName)});
    return list.text();
}

std::string DiskReports::table(const std::string& node, const DiscFacts& disc) {
    return "/dev/" + node + " (external, physical):\n" +
           "   #:  TYPE          NAME                               SIZE   IDENTIFIER\n" +
           "   0:  " + padded(disc.type, 13) + " " + padded(disc.volumeName, 28) + " " +
           paddedLeft(disc.bytes ? sizeText(*disc.bytes) : "-", 10) + "   " + node + "\n";
}

std::string DiskReports::sizeText(std::uint64_t bytes) {
    constexpr std::array<const char*, 5> units = {" kB", " MB", " GB", " TB", " PB"};
    if (bytes < 1000) {
        return std::to_string(bytes) + " bytes";
    }
    std::uint64_t unit = 1000;
    std::size_t index = 0;
    // "1000.0 kB" would be the next unit's "1.0".
    while (index + 1 < units.size() && bytes >= unit * 1000 - unit / 20) {
        unit *= 1000;
        ++index;
    }
    const std::uint64_t tenths = (bytes / (unit / 10) + (bytes % (unit / 10) >= unit / 20 ? 1 : 0));
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + units[index];
}
