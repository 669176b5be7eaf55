#include "FilledTemplate.h"

#include <QRegularExpression>
#include <QStringList>

#include "CommandTable.h"
#include "PreferenceTable.h"

namespace {

// Plain text as a manual page has it: options bold, the names of arguments italic.
QString roff(QString text) {
    static const QRegularExpression argument(QStringLiteral("\\b(FILE|TEXT|KEY|VALUE)\\b"));
    static const QRegularExpression option(QStringLiteral("(?<![\\w\"-])(--?[A-Za-z][a-z-]*)"));
    text.replace(argument, QStringLiteral("\\fI\\1\\fP"));
    text.replace(option, QStringLiteral("\\fB\\1\\fP"));
    text.replace(QLatin1String("\n\n"), QLatin1String("\n.IP\n"));
    return text.replace(QLatin1Char('-'), QLatin1String("\\-"));
}

QString bold(const char* text) {
    return QStringLiteral("\\fB%1\\fP").arg(roff(QLatin1String(text)));
}

QString entry(const QString& tag, const QString& text) {
    return QStringLiteral(".TP\n%1\n%2\n").arg(tag, text);
}

// As a sentence.
QString entry(const QString& tag, const char* help) {
    const QString text = roff(QLatin1String(help)) + QLatin1Char('.');
    return entry(tag, text.left(1).toUpper() + text.mid(1));
}

QString entries(std::span<const OptionRow> options) {
    QString text;
    for (const OptionRow& option : options) {
        text += entry(roff(option.usage()), option.help);
    }
    return text;
}

QString settingEntries() {
    QString text;
    for (const PreferenceRow& row : preferenceTable) {
        text += entry(bold(row.key), row.help);
    }
    return text;
}

QString commandEntries() {
    QString text;
    for (const CommandRow& command : CommandTable::commands()) {
        text += entry(bold(command.name) + QLatin1Char(' ') + roff(QLatin1String(command.usage)),
                      roff(QLatin1String(command.help)));
        const QString below =
            command.command == Command::Settings ? settingEntries() : entries(command.options);
        if (!below.isEmpty()) {
            text += QStringLiteral(".RS\n%1.RE\n").arg(below);
        }
    }
    return text;
}

QString names(std::span<const OptionRow> options) {
    QStringList words;
    for (const OptionRow& option : options) {
        words.append(QLatin1String("--") + QLatin1String(option.name));
    }
    return words.join(QLatin1Char(' '));
}

// The lines of a "case" that add a command's options.
QString optionsOfCommands() {
    QString text;
    for (const CommandRow& command : CommandTable::commands()) {
        if (!command.options.empty()) {
            text += QStringLiteral("        %1) options+=' %2' ;;\n")
                        .arg(QLatin1String(command.name), names(command.options));
        }
    }
    return text;
}

// What precedes the name of a file, as a pattern of a "case".
QString fileOptions() {
    QStringList words;
    for (const CommandRow& command : CommandTable::commands()) {
        for (const OptionRow& option : command.options) {
            if (option.argument != nullptr) {
                words.append(names({&option, 1}));
                if (option.letter != 0) {
                    words.append(QStringLiteral("-%1").arg(QLatin1Char(option.letter)));
                }
            }
        }
    }
    return words.join(QLatin1String(" | "));
}

QString commandNames() {
    QStringList words;
    for (const CommandRow& command : CommandTable::commands()) {
        words.append(QLatin1String(command.name));
    }
    return words.join(QLatin1Char(' '));
}

QString settingNames() {
    QStringList words;
    for (const PreferenceRow& row : preferenceTable) {
        words.append(QLatin1String(row.key));
    }
    return words.join(QLatin1Char(' '));
}

}  // namespace

QString filledTemplate(QString text) {
    return text.replace(QLatin1String("@COMMAND_ENTRIES@\n"), commandEntries())
        .replace(QLatin1String("@OPTION_ENTRIES@\n"), entries(CommandTable::commonOptions()))
        .replace(QLatin1String("@COMMANDS@"), commandNames())
        .replace(QLatin1String("@OPTIONS@"), names(CommandTable::commonOptions()))
        .replace(QLatin1String("@OPTIONS_OF_COMMANDS@\n"), optionsOfCommands())
        .replace(QLatin1String("@FILE_OPTIONS@"), fileOptions())
        .replace(QLatin1String("@SETTINGS@"), settingNames());
}
