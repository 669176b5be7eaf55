#include "DriveTool.h"

#include <sysexits.h>

#include <cstdlib>

#include "StatusReport.h"

namespace {

constexpr const char* usage =
    "Usage: drutil status   show the optical drive and the disc in it\n"
    "       drutil eject    open its tray\n"
    "SPINDRIFT_DRIVE=srN chooses one of several drives.\n";

}  // namespace

DriveTool::DriveTool(const DriveQuery& drives, Tray& tray) : m_drives(drives), m_tray(tray) {}

CommandOutcome DriveTool::run(const std::vector<std::string>& arguments) {
    if (arguments.size() == 1) {
        if (arguments[0] == "status") {
            return status();
        }
        if (arguments[0] == "eject") {
            return eject();
        }
        if (arguments[0] == "--help") {
            return {EXIT_SUCCESS, usage, {}};
        }
    }
    return {EX_USAGE, {}, usage};
}

CommandOutcome DriveTool::status() const {
    const auto drive = m_drives.defaultDrive(DriveQuery::Wanted::Type);
    if (drive) {
        return {EXIT_SUCCESS, StatusReport::text(*drive), {}};
    }
    // No drive at all is no problem to tell of: the exit status says it.
    if (drive.failure().kind == Failure::Kind::NoDrive) {
        return {EXIT_FAILURE, {}, {}};
    }
    return CommandOutcome::failed("drutil", drive.failure());
}

CommandOutcome DriveTool::eject() {
    const auto node = m_drives.defaultNode();
    if (!node) {
        return CommandOutcome::failed("drutil", node.failure());
    }
    const auto opened = m_tray.open(*node);
    return opened ? CommandOutcome{} : CommandOutcome::failed("drutil", opened.failure());
}
