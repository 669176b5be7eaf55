// What every command is given, and the exit status that it gives back.
#pragma once

#include <QString>

#include "CommandArguments.h"
#include "TextOutput.h"

namespace ExitStatus {
constexpr int done = 0;
constexpr int failed = 1;
constexpr int mismatched = 2;
constexpr int usage = 64;
constexpr int cancelled = 130;
}  // namespace ExitStatus

struct CommandContext {
    const Invocation& invocation;
    TextOutput& output;
    TextOutput& errors;

    // A sentence for people, on standard error, with the program's name in front.
    void complain(const QString& sentence) const {
        errors.write(QStringLiteral("spindrift-cli: ") + sentence + QLatin1Char('\n'));
    }
};
