// DeviceAccess by the kernel's calls for optical drives and by MMC commands (SG_IO).
#pragma once

#include <optional>
#include <string>

#include "DeviceAccess.h"

class KernelDevice final : public DeviceAccess {
public:
    std::optional<MediumFacts> medium(const std::string& node, std::string* error) override;
    std::string label(const std::string& node) override;

    Ejected eject(const std::string& node, std::string* error) override;

    // What the eject call's result, and errno when it is negative, mean.
    static Ejected ejected(int result, int error);
};
