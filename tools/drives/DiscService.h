// What is done to a mounted or protected disc with the system's help.
//
// An interface so that tests can stand in for the system. One thread; calls block until the system
// has answered, 25 seconds at most for the service.
#pragma once

#include <string>

#include "Result.h"

class DiscService {
public:
    DiscService() = default;
    DiscService(const DiscService&) = delete;
    DiscService& operator=(const DiscService&) = delete;
    virtual ~DiscService() = default;

    // Through the service, for which an ordinary user's right to use the drive is enough. The
    // device's name comes without "/dev/". Fails with Unavailable, Busy or, with the service's own
    // text, System.
    virtual Result<void> unmount(const std::string& device) = 0;
    virtual Result<void> eject(const std::string& device) = 0;

    // By the kernel's call, for which one must be root.
    virtual Result<void> unmountFolder(const std::string& folder) = 0;
};
