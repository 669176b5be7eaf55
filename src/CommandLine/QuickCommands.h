// The commands that ask or change one thing and are done. Main thread; each blocks for as long as
// the disc tools take and gives back its exit status.
#pragma once

#include "CommandContext.h"

namespace QuickCommands {

int status(const CommandContext& context);
int history(const CommandContext& context);
int nickname(const CommandContext& context);
int eject(const CommandContext& context);
int access(const CommandContext& context);
// A usage error of a key or a value is told here.
int settings(const CommandContext& context);
int leftovers(const CommandContext& context);

}  // namespace QuickCommands

// How a user of this system gets access to its optical drives: several lines.
QString accessGuidance();
