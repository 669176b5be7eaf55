#include "DiskTool.h"

#include <sysexits.h>

#include <cstdlib>

#include "DiskReports.h"

namespace {

constexpr const char* usage =
    "Usage: diskutil info -plist DEVICE   describe the disc as a property list\n"
    "       diskutil list [-plist] DEVICE list it\n"
    "       diskutil eject DEVICE         unmount it and open the tray\n"
    "DEVICE is an optical drive such as /dev/sr0.\n";

}  // namespace

DiskTool::DiskTool(const DriveQuery& drives, Tray& tray) : m_drives(drives), m_tray(tray) {}

int DiskTool::run(const std::vector<std::string>& arguments, std::string* output,
                  std::string* errors) {
    if (arguments == std::vector<std::string>{"--help"}) {
        *output = usage;
        return EXIT_SUCCESS;
    }
    const bool asPropertyList = arguments.size() == 3 && arguments[1] == "-plist";
    const std::string verb = arguments.empty() ? std::string() : arguments.front();
    const bool known = asPropertyList
                           ? verb == "info" || verb == "list"
                           : arguments.size() == 2 && (verb == "list" || verb == "eject");
    if (!known || arguments.back().empty() || arguments.back().front() == '-') {
        *errors = usage;
        return EX_USAGE;
    }
    if (verb == "eject") {
        return eject(arguments.back(), output, errors);
    }
    const auto drive = driveWithDisc(arguments.back(), errors);
    if (!drive) {
        return EXIT_FAILURE;
    }
    if (!asPropertyList) {
        *output = DiskReports::table(drive->node, *drive->disc);
    } else if (verb == "info") {
        *output = DiskReports::info(drive->node, *drive->disc);
    } else {
        *output = DiskReports::list(drive->node, *drive->disc);
    }
    return EXIT_SUCCESS;
}

std::optional<DriveFacts> DiskTool::driveWithDisc(const std::string& device,
                                                  std::string* errors) const {
    std::string problem;
    auto drive = m_drives.drive(device, DriveQuery::Wanted::TypeAndName, &problem);
    if (drive && !drive->disc) {
        problem = "There is no disc in " + device;
        drive.reset();
    }
    if (!drive) {
        *errors = "diskutil: " + problem + "\n";
    }
    return drive;
}

int DiskTool::eject(const std::string& device, std::string* output, std::string* errors) {
    std::string problem;
    const auto node = m_drives.node(device, &problem);
    if (!node || !m_tray.open(*node, &problem)) {
        *errors = "diskutil: " + problem + "\n";
        return EXIT_FAILURE;
    }
    *output = "Disk /dev/" + *node + " ejected\n";
    return EXIT_SUCCESS;
}
