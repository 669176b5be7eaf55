// Whether the desktop is dark.
#pragma once

#include <QString>

namespace SystemAppearance {

enum class Scheme { Light, Dark };

// Dark exactly when the preference "AppleInterfaceStyle" is "Dark"; while that key is absent, when
// the desktop portal's color-scheme is 1. Main thread; never blocks: the portal's answer is asked
// for once in the background by prepare() and kept up to date, and counts as light until it is
// there.
Scheme current();

// Starts asking the desktop portal; call once after the application object exists.
void prepare();

}  // namespace SystemAppearance
