// What is done to a mounted or protected disc with the system's help.
//
// An interface so that tests can stand in for the system. One thread; calls block until the system
// has answered, 25 seconds at most for the service.
#pragma once

#include <string>

class DiscService {
public:
    enum class Result {
        Done,
        Unavailable,  // the disc service does not run here or does not know the device
        Busy,         // a program uses the disc
        Failed,
    };

    DiscService() = default;
    DiscService(const DiscService&) = delete;
    DiscService& operator=(const DiscService&) = delete;
    virtual ~DiscService() = default;

    // Through the service, for which an ordinary user's right to use the drive is enough. The
    // device's name comes without "/dev/"; *problem is the service's own text on Failed and Busy.
    virtual Result unmount(const std::string& device, std::string* problem) = 0;
    virtual Result eject(const std::string& device, std::string* problem) = 0;

    // By the kernel's call, for which one must be root. *problem is the error's text.
    virtual Result unmountFolder(const std::string& folder, std::string* problem) = 0;
};
