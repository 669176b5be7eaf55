// Finds what a device name stands for: the practice drive's disc, a disc in an optical drive, or
// another block device.
#pragma once

#include <memory>
#include <string>

#include "Medium.h"
#include "Result.h"

// The medium in this device, such as "/dev/sr0", ready to be imaged; may wait while a disc spins
// up. A failure's sentence has "Permission denied" in it when the reason is a missing permission.
Result<std::unique_ptr<Medium>> openMedium(const std::string& device);
