// DeviceAccess by the kernel's calls for optical drives and by MMC commands (SG_IO).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "DeviceAccess.h"

class KernelDevice final : public DeviceAccess {
public:
    std::optional<Medium> medium(const std::string& node, std::string* error) override;
    std::string label(const std::string& node) override;

    Ejected eject(const std::string& node, std::string* error) override;

    // What the eject call's result, and errno when it is negative, mean.
    static Ejected ejected(int result, int error);
    // The current profile in a GET CONFIGURATION answer; absent when it is too short to hold one.
    static std::optional<std::uint16_t> profileIn(const std::uint8_t* answer, std::size_t size);
    // Whether a READ DISC INFORMATION answer says that nothing is recorded.
    static bool isBlankIn(const std::uint8_t* answer, std::size_t size);
};
