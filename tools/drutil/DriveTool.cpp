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

int DriveTool::run(const std::vector<std::string>& arguments, std::string* output,
                   std::string* errors) {
    if (arguments.size() == 1) {
        if (arguments[0] == "status") {
            return status(output, errors);
        }
        if (arguments[0] == "eject") {
            return eject(errors);
        }
        if (arguments[0] == "--help") {
            *output = usage;
            return EXIT_SUCCESS;
        }
    }
    *errors = usage;
    return EX_USAGE;
}

int DriveTool::status(std::string* output, std::string* errors) const {
    std::string problem;
    const auto drive = m_drives.defaultDrive(DriveQuery::Wanted::Type, &problem);
    if (!drive) {
        // No drive at all is no problem to tell of: the exit status says it.
        if (!problem.empty()) {
            *errors = "drutil: " + problem + "\n";
        }
        return EXIT_FAILURE;
    }
    *output = StatusReport::text(*drive);
    return EXIT_SUCCESS;
}

int DriveTool::eject(std::string* errors) {
    std::string problem;
    const auto node = m_drives.defaultNode(&problem);
    if (!node) {
        *errors = "drutil: " + (problem.empty() ? "No optical drive found." : problem) + "\n";
        return EXIT_FAILURE;
    }
    if (!m_tray.open(*node, &problem)) {
        *errors = "drutil: " + problem + "\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
