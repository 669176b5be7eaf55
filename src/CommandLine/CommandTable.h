// The commands and options of the terminal program, one a row: its parser, --help, the manual page
// and bash's completion are made from it.
#pragma once

#include <QString>
#include <span>

#include "CommandArguments.h"

enum class Option { Output, Thorough, Eject, Force, Remove, Json, Practice, Help, Version };

struct OptionRow {
    Option option;
    const char* name;      // after "--"
    char letter;           // after "-"; 0: none
    const char* argument;  // null: none; in brackets: it may be absent
    const char* help;      // in lower case, without a full stop

    // "-o, --output FILE"
    QString usage() const;
};

struct CommandRow {
    Command command;
    const char* name;
    const char* usage;  // what follows the name
    qsizetype mostOperands;
    const char* summary;  // in lower case, without a full stop
    const char* help;     // sentences, an empty line between paragraphs
    std::span<const OptionRow> options;

    // "rip --output FILE"
    QString synopsis() const;
};

namespace CommandTable {

std::span<const CommandRow> commands();
// The options of every command.
std::span<const OptionRow> commonOptions();

const CommandRow& row(Command command);
// Null when there is none of that name.
const CommandRow* named(const QString& name);

}  // namespace CommandTable
