// Leaves a program that was started with all of root's rights with the few that it needs.
#pragma once

#include "Result.h"

namespace Privileges {

// Makes what the caller handed over harmless: an empty environment, "/" as the folder, no further
// descriptors, default signals and limits. Call it first, in a process with one thread.
Result<void> shedInheritance();

// Keeps only the rights to change files of others and to log that, for this process and for every
// program that it starts, for good. After a failure go no further.
Result<void> keepOnlyNeeded();

// Whether the process runs wholly as root, as pkexec starts it, and not as a program whose file has
// the set-user bit.
bool isPlainRoot();

}  // namespace Privileges
