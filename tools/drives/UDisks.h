// DiscService by UDisks2 on the system bus, and by the kernel's call.
//
// libsystemd, whose bus client this uses, is loaded on the first call to the service.
#pragma once

#include <string>
#include <string_view>

#include "DiscService.h"

class UDisks final : public DiscService {
public:
    Result unmount(const std::string& device, std::string* problem) override;
    Result eject(const std::string& device, std::string* problem) override;
    Result unmountFolder(const std::string& folder, std::string* problem) override;

    // The service's object for a device: each byte that is no ASCII letter or digit is "_" and its
    // two hexadecimal digits.
    static std::string objectPath(std::string_view device);

    // What an error with this name means.
    static Result resultOf(std::string_view errorName);
};
