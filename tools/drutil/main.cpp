#include "DriveTool.h"
#include "KernelDevice.h"
#include "UDisks.h"

int main(int argc, char** argv) {
    KernelDevice devices;
    DriveQuery drives(SystemPaths{}, devices);
    drives.useEnvironment();
    UDisks service;
    Tray tray(SystemPaths{}, drives.practiceFolder(), devices, service);
    return DriveTool(drives, tray).run({argv + 1, argv + argc}).print("drutil");
}
