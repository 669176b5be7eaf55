#include "LoopDevice.h"

#include <sys/stat.h>
#include <unistd.h>

#include "ToolRun.h"

namespace {

ToolRun::Result losetup(const std::vector<std::string>& arguments) {
    return ToolRun::run("/usr/sbin/losetup", arguments);
}

}  // namespace

LoopDevice::LoopDevice(const std::string& file, unsigned sectorBytes) {
    auto made = losetup(
        {"--show", "--find", "--read-only", "--sector-size", std::to_string(sectorBytes), file});
    while (!made.out.empty() && made.out.back() == '\n') {
        made.out.pop_back();
    }
    m_node = made.status == 0 ? made.out : std::string();
}

LoopDevice::~LoopDevice() {
    if (!m_node.empty()) {
        losetup({"--detach", m_node});
    }
}

std::optional<std::string> LoopDevice::whyNot() {
    if (geteuid() != 0) {
        return "loop devices can be made by the superuser only";
    }
    struct stat status {};
    if (stat("/dev/loop-control", &status) != 0) {
        return "this kernel has no loop devices";
    }
    return std::nullopt;
}
