// What the command line asks for, read from the arguments. Pure; any thread.
#pragma once

#include <QByteArrayList>
#include <QString>
#include <QStringList>
#include <optional>
#include <variant>

enum class Command {
    Status,
    Rip,
    SpeedTest,
    History,
    Nickname,
    Eject,
    Access,
    Settings,
    Leftovers
};

// One well-formed request to do something.
struct Invocation {
    Command command = Command::Status;
    bool json = false;
    bool practice = false;
    std::optional<QString> practiceImage;  // as it was given; absent: the sample disc

    QString output;  // rip: the image to write, as it was given; never empty
    bool thorough = false;
    bool eject = false;
    bool force = false;

    bool remove = false;  // leftovers

    QStringList operands;  // nickname: at most one text; settings: a key, then its value;
                           // leftovers: at most one folder

    bool operator==(const Invocation&) const = default;
};

// A wish for the help of one command, or of the program.
struct HelpRequest {
    std::optional<Command> command;
    bool operator==(const HelpRequest&) const = default;
};

struct VersionRequest {
    bool operator==(const VersionRequest&) const = default;
};

// What is wrong with the arguments, as a sentence, and whose help will tell more.
struct UsageError {
    QString message;
    std::optional<Command> command;
    bool operator==(const UsageError&) const = default;
};

using CommandArguments = std::variant<Invocation, HelpRequest, VersionRequest, UsageError>;

// The arguments as the system hands them over, without the program's name. Options may stand before
// and after the command, long ones cut to what no other begins with and letters together; "--" ends
// them. The argument after "--practice" is its image unless it is
// an option or the name of a command; "--practice=FILE" always is.
CommandArguments parseCommandArguments(const QByteArrayList& arguments);
