// Leaves a program that was started with all of root's rights with the few that it needs.
#pragma once

#include <string>

namespace Privileges {

// Makes what the caller handed over harmless: an empty environment, "/" as the folder, no further
// descriptors, default signals and limits. Call it first, in a process with one thread.
bool shedInheritance(std::string* problem);

// Keeps only the rights to change files of others and to log that, for this process and for every
// program that it starts, for good. False with the reason in *problem; go no further then.
bool keepOnlyNeeded(std::string* problem);

// Whether the process runs wholly as root, as pkexec starts it, and not as a program whose file has
// the set-user bit.
bool isPlainRoot();

}  // namespace Privileges
