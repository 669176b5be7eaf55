#include "CommandArguments.h"
#include "CommandTable.h"
#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "FuzzText.h"

namespace {

void ensureSane(const Invocation& invocation) {
    const CommandRow& row = CommandTable::row(invocation.command);
    ensure(invocation.operands.size() <= row.mostOperands, "there are not too many operands");
    ensure((invocation.command == Command::Rip) == !invocation.output.isEmpty(),
           "a rip has an output, and nothing else has");
    ensure(invocation.output != QLatin1String("-"), "no image goes to standard output");
    ensure(!invocation.practiceImage || invocation.practice, "an image is for the practice drive");
    ensure(!invocation.practiceImage || !invocation.practiceImage->isEmpty(),
           "an image has a name");
}

}  // namespace

FUZZ_TARGET(CommandLine) {
    QByteArrayList arguments;
    for (FuzzInput input(bytes); !input.isEmpty();) {
        // What the system hands over ends at a null byte.
        arguments.append(QByteArray(input.text().c_str()));
    }
    const auto result = parseCommandArguments(arguments);
    if (const auto* invocation = std::get_if<Invocation>(&result)) {
        ensureSane(*invocation);
    } else if (const auto* error = std::get_if<UsageError>(&result)) {
        ensure(!error->message.isEmpty(), "a mistake is told");
    }
    if (std::holds_alternative<HelpRequest>(result)) {
        ensure(std::holds_alternative<HelpRequest>(parseCommandArguments(arguments + arguments)),
               "who asks twice for help gets help");
    }
}
