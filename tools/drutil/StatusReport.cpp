#include "StatusReport.h"

#include <algorithm>

#include "Utf8.h"

namespace {

constexpr std::size_t vendorWidth = 8;
constexpr std::size_t productWidth = 16;
constexpr std::size_t revisionWidth = 4;

// Whoever looks for the disc's line takes the first with both of its words, and a drive can call
// itself anything.
std::string maskDiscLabels(std::string line) {
    if (line.find("Type:") != std::string::npos && line.find("Name:") != std::string::npos) {
        std::replace(line.begin(), line.end(), ':', ' ');
    }
    return line;
}

// Exactly this wide. Drives give printable ASCII; for anything else stands a blank, as the kernel
// has it, so that every character is a column.
std::string column(std::string text, std::size_t width) {
    text.resize(width, ' ');
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, ' ');
    return text;
}

std::string row(const std::string& vendor, const std::string& product,
                const std::string& revision) {
    return " " + column(vendor, vendorWidth) + " " + column(product, productWidth) + "  " +
           column(revision, revisionWidth) + "\n";
}

}  // namespace

std::string StatusReport::text(const DriveFacts& drive) {
    constexpr std::size_t typeWidth = 22;
    std::string report = row("Vendor", "Product", "Rev") +
                         maskDiscLabels(row(drive.vendor, drive.product, drive.revision)) + "\n";
    if (!drive.disc) {
        return report + "           Type: No Media Inserted\n";
    }
    const std::string type = Utf8::padded(Utf8::oneLine(drive.disc->type) + " ", typeWidth);
    return report + "           Type: " + type + "Name: /dev/" + drive.node + "\n";
}
