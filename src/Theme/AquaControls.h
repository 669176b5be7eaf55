// The switches through which views get the glossy look.
#pragma once

#include "AquaButtonStyle.h"  // IWYU pragma: export
#include "AquaPulse.h"        // IWYU pragma: export
