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

CommandOutcome DiskTool::run(const std::vector<std::string>& arguments) {
    if (arguments == std::vector<std::string>{"--help"}) {
        return {EXIT_SUCCESS, usage, {}};
    }
    const bool asPropertyList = arguments.size() == 3 && arguments[1] == "-plist";
    const std::string verb = arguments.empty() ? std::string() : arguments.front();
    const bool known = asPropertyList
                           ? verb == "info" || verb == "list"
                           : arguments.size() == 2 && (verb == "list" || verb == "eject");
    if (!known || arguments.back().empty() || arguments.back().front() == '-') {
        return {EX_USAGE, {}, usage};
    }
    const std::string& device = arguments.back();
    if (verb == "eject") {
        return eject(device);
    }
    const auto drive = m_drives.drive(device, DriveQuery::Wanted::TypeAndName);
    if (!drive) {
        return CommandOutcome::failed("diskutil", drive.failure());
    }
    if (!drive->disc) {
        return CommandOutcome::failed("diskutil",
                                      {Failure::Kind::Medium, "There is no disc in " + device});
    }
    if (!asPropertyList) {
        return {EXIT_SUCCESS, DiskReports::table(drive->node, *drive->disc), {}};
    }
    const auto report = verb == "info" ? DiskReports::info : DiskReports::list;
    return {EXIT_SUCCESS, report(drive->node, *drive->disc), {}};
}

CommandOutcome DiskTool::eject(const std::string& device) {
    const auto node = m_drives.node(device);
    if (!node) {
        return CommandOutcome::failed("diskutil", node.failure());
    }
    const auto opened = m_tray.open(*node);
    if (!opened) {
        return CommandOutcome::failed("diskutil", opened.failure());
    }
    return {EXIT_SUCCESS, "Disk /dev/" + *node + " ejected\n", {}};
}
