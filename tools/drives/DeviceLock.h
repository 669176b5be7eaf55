// Keeps a disc in its drive while a program reads it. The kernel lets anybody eject a disc that is
// not mounted, so the disc tools lock the device's node among themselves.
//
// Stateless; any thread. Both functions take a descriptor of the node, or of what stands for it,
// and wait for two seconds at most: the device manager holds such a lock for a moment.
#pragma once

#include <string>

#include "Result.h"

namespace DeviceLock {

// Locks the device for reading, for as long as the descriptor is open, and lets the device manager
// go on looking at it. Fails with Busy when another program reads it; the sentence has no period.
// device: its name for people; processes: "/proc". Succeeds where there are no locks.
Result<void> holdForReading(int descriptor, const std::string& device,
                            const std::string& processes = "/proc");

// Fails in the same way while a program reads the device; locks nothing.
Result<void> checkThatNobodyReads(int descriptor, const std::string& device,
                                  const std::string& processes = "/proc");

}  // namespace DeviceLock
