// DeviceAccess by the kernel's calls for optical drives and by MMC commands (SG_IO).
#pragma once

#include <string>

#include "DeviceAccess.h"

class KernelDevice final : public DeviceAccess {
public:
    Result<MediumFacts> medium(const std::string& node) override;
    std::string label(const std::string& node) override;
    Result<void> eject(const std::string& node) override;

    // What the eject call's result, and errno when it is negative, mean.
    static Result<void> ejected(int result, int error);
};
