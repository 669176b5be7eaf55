// The texts of --help and --version.
#pragma once

#include <QString>
#include <optional>

#include "CommandArguments.h"

// The help of one command, or of the program; ends with a line feed.
QString helpText(std::optional<Command> command);

// "spindrift-cli 1.2.3" with a line feed.
QString versionText();
