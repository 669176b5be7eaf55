// How the desktop wants programs to look: dark or light, moving or still.
#pragma once

#include <QString>

namespace SystemAppearance {

enum class Scheme { Light, Dark };

// Dark exactly when the preference "AppleInterfaceStyle" is "Dark"; while that key is absent, when
// the desktop portal's color-scheme is 1. Main thread; never blocks: the portal is asked in the
// background, and counts as light until its answer is there.
Scheme current();

// Whether the desktop asks for no animations; false until the portal has answered. Any thread.
bool reducedMotion();

// Starts asking the desktop portal, and following its changes, on a background thread that lives as
// long as the process. The first call counts. Costs the caller nothing, whatever the bus does.
void prepare();

}  // namespace SystemAppearance
