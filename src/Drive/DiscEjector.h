// Ejects a disc, with retries.
#pragma once

#include <QString>
#include <functional>

namespace DiscEjector {

// Three tries of "diskutil eject", a second apart, then one of "drutil eject"; true when one of
// them ended with status 0. The last one, whose arguments name no drive, learns by SPINDRIFT_DRIVE
// which one is meant. Blocks for up to two seconds and the tools' run times: never call it on
// the main thread. The device name comes without "/dev/".
bool eject(const QString& bsdName);

// The same with another way to wait, for tests.
using Sleep = std::function<void(double seconds)>;
bool eject(const QString& bsdName, const Sleep& sleep);

}  // namespace DiscEjector
