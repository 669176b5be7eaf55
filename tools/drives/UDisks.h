// DiscService by UDisks2 on the system bus, and by the kernel's call.
//
// libsystemd, whose bus client this uses, is loaded on the first call to the service.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "DiscService.h"

class UDisks final : public DiscService {
public:
    Result<void> unmount(const std::string& device) override;
    Result<void> eject(const std::string& device) override;
    Result<void> unmountFolder(const std::string& folder) override;

    // The service's object for a device: each byte that is no ASCII letter or digit is "_" and its
    // two hexadecimal digits.
    static std::string objectPath(std::string_view device);

    // What an error with this name means; absent when what was asked for is so already.
    static std::optional<Failure::Kind> kindOf(std::string_view errorName);
};
