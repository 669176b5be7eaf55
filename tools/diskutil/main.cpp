#include <unistd.h>

#include "DiskTool.h"
#include "KernelDevice.h"
#include "SmallFile.h"
#include "UDisks.h"

int main(int argc, char** argv) {
    KernelDevice devices;
    DriveQuery drives(SystemPaths{}, devices);
    drives.useEnvironment();
    UDisks service;
    Tray tray(SystemPaths{}, drives.practiceFolder(), devices, service);
    std::string output;
    std::string errors;
    const int status = DiskTool(drives, tray)
                           .run(std::vector<std::string>(argv + 1, argv + argc), &output, &errors);
    SmallFile::writeAll(STDERR_FILENO, errors);
    return SmallFile::writeAll(STDOUT_FILENO, output) ? status : 1;
}
