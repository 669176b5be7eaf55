// What holds after every run of the program, whatever went wrong in it.
#pragma once

#include <string>

#include "FaultWorld.h"

namespace FaultRules {

enum class Task { Rip, ReplacingRip, Copy, ReplacingCopy, ThoroughRip, SpeedTest, Settings };

QString wordsOf(Task run);
// The image to write in the run's command line; "SAME" where it has none.
QString targetOf(Task run);
// What is there before: an old file where the copy goes, preferences.
void prepare(const FaultWorld& world, Task run);

// What may happen in spite of what otherwise holds.
struct Allowed {
    bool silence = false;         // the message itself could not be written
    bool temporaryFiles = false;  // the program could not clean up
    bool brokenHistory = false;   // its one plain write was cut short
    bool signal = false;          // the program was killed by one, or cancelled
};

// Empty, or which rule the run has broken.
std::string broken(const FaultWorld& world, Task run, const FaultWorld::Ending& ending,
                   const Allowed& allowed);

}  // namespace FaultRules
