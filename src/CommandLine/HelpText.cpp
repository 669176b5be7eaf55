#include "HelpText.h"

#include "CommandTable.h"
#include "PreferenceTable.h"

namespace {

QString line(const QString& name, const char* text) {
    return QStringLiteral("  %1%2\n").arg(name, -26).arg(QLatin1String(text));
}

QString lines(std::span<const OptionRow> options) {
    QString text;
    for (const OptionRow& option : options) {
        text += line(option.usage(), option.help);
    }
    return text;
}

QString programHelp() {
    QString commands;
    for (const CommandRow& command : CommandTable::commands()) {
        commands += line(command.synopsis(), command.summary);
    }
    return QStringLiteral(R"(Usage: spindrift-cli COMMAND [OPTION]...
Makes raw ISO images of optical discs.

Commands:
%1
Options of every command:
%2
Exit status: 0 done, 1 failed, 2 verification did not match, 64 wrong usage, 130 cancelled.
)")
        .arg(commands, lines(CommandTable::commonOptions()));
}

QString commandHelp(const CommandRow& command) {
    QString keys;
    if (command.command == Command::Settings) {
        keys = QStringLiteral("\nKeys:\n");
        for (const PreferenceRow& row : preferenceTable) {
            keys += line(QLatin1String(row.key), row.help);
        }
    }
    return QStringLiteral("Usage: spindrift-cli %1 [OPTION]...\n%2\n%3\nOptions:\n%4%5")
        .arg(command.synopsis(), QLatin1String(command.help), keys, lines(command.options),
             lines(CommandTable::commonOptions()));
}

}  // namespace

QString helpText(std::optional<Command> command) {
    return command ? commandHelp(CommandTable::row(*command)) : programHelp();
}

QString versionText() {
    return QStringLiteral("spindrift-cli " SPINDRIFT_VERSION "\n");
}
