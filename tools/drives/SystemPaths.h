// Where the kernel and the system tell about devices; other folders in tests.
#pragma once

#include <string>

struct SystemPaths {
    std::string blockDevices = "/sys/class/block";
    std::string udevRecords = "/run/udev/data";
    std::string nodes = "/dev";
    std::string processes = "/proc";
};
