#include "CommandTable.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array commonRows{
    OptionRow{Option::Json, "json", 0, nullptr, "print one JSON object a line"},
    OptionRow{Option::Practice, "practice", 0, "[FILE.iso]",
              "use the practice drive, with this image (else a sample) as its disc"},
    OptionRow{Option::Help, "help", 'h', nullptr, "this help, or the help of the command"},
    OptionRow{Option::Version, "version", 'V', nullptr, "the version"},
};

constexpr std::array ripRows{
    OptionRow{Option::Output, "output", 'o', "FILE",
              "the image to write; refused when it exists, unless --force is given"},
    OptionRow{Option::Thorough, "thorough", 0, nullptr,
              "read the disc a second time and compare SHA-256 digests"},
    OptionRow{Option::Eject, "eject", 0, nullptr,
              "eject the disc after the image has been verified"},
    OptionRow{Option::Force, "force", 0, nullptr,
              "replace FILE if it is there (a cancel puts it in the trash), room or not"},
};

constexpr std::array leftoversRows{
    OptionRow{Option::Remove, "remove", 0, nullptr, "remove them for good after naming them"},
};

constexpr std::array commandRows{
    CommandRow{Command::Status,
               "status",
               "",
               0,
               "the drive and the disc in it",
               R"(Asks the drive once and shows the drive and its disc.

With --json one object: "driveDetected", "driveIdentity", "disc" and "lastError".
Exit status: 0 a drive answered, 1 none did.)",
               {}},
    CommandRow{
        Command::Rip, "rip", "--output FILE", 1, "make an ISO image of the disc",
        R"(Makes an ISO image of the disc in the drive. The image is written to a temporary file and
moved to FILE when it is complete. Nothing is read when FILE's folder does not exist, nor, without
--force, when there is too little room. Ctrl-C cancels; while the image is being verified, the
image is kept.

With --json every change is printed: {"property": name, "value": value}. After a failure the value
of "temporaryImage" is the path of the file with what was read, if there is one.
A FILE whose name begins with "-" is given as --output=FILE or after "--".
Exit status: 0 done, 1 failed, 2 the image does not match the disc, 130 cancelled.)",
        ripRows},
    CommandRow{
        Command::SpeedTest,
        "speed-test",
        "",
        0,
        "measure how fast the drive reads the disc",
        R"(Reads the whole disc, keeps nothing of it and records the average speed in the history. Ctrl-C
cancels. With --json every change is printed: {"property": name, "value": value}.)",
        {}},
    CommandRow{
        Command::History,
        "history",
        "",
        0,
        "the speeds measured so far, newest first",
        R"(Shows the measured speeds, newest first. With --json one object a result, with its "multiple" of
the disc kind's single speed and the drive's "nickname".)",
        {}},
    CommandRow{
        Command::Nickname,
        "nickname",
        "[TEXT]",
        1,
        "show, set or (with an empty TEXT) remove the drive's nickname",
        R"(Shows the nickname of the drive. With TEXT, gives the drive that nickname; with an empty TEXT,
removes it.

A TEXT that would follow --practice goes before it: nickname TEXT --practice.)",
        {}},
    CommandRow{Command::Eject,
               "eject",
               "",
               0,
               "eject the disc",
               R"(Ejects the disc that is in the drive. Exit status: 0 ejected, 1 not.)",
               {}},
    CommandRow{
        Command::Access,
        "access",
        "",
        0,
        "tell whether this user may read discs",
        R"(Tells whether this user may read the discs in the optical drives, and if not, how to change that.
Exit status: 0 allowed, 1 not.)",
        {}},
    CommandRow{
        Command::Settings,
        "settings",
        "[KEY [VALUE]]",
        2,
        "show or change the preferences",
        R"(Shows all preferences, or one, or changes one. VALUE is true, false, on or off. The preferences
are the window's; "rip" goes by its own options.)",
        {}},
    CommandRow{
        Command::Leftovers, "leftovers", "[FOLDER]", 1,
        "list or remove the images that failed rips have left",
        R"(Lists what failed rips have left in the folder for temporary images, or in FOLDER, newest first:
when it was written, its size, the disc's name and the file. Images of rips that run are left out.

With --json one object a file: "path", "bytes", "lastChanged" and "volumeName".)",
        leftoversRows},
};

}  // namespace

QString OptionRow::usage() const {
    QString text = QLatin1String("--") + QLatin1String(name);
    if (letter != 0) {
        text.prepend(QStringLiteral("-%1, ").arg(QLatin1Char(letter)));
    }
    return argument == nullptr ? text : text + QLatin1Char(' ') + QLatin1String(argument);
}

QString CommandRow::synopsis() const {
    return QStringLiteral("%1 %2").arg(QLatin1String(name), QLatin1String(usage)).trimmed();
}

namespace CommandTable {

std::span<const CommandRow> commands() {
    return commandRows;
}

std::span<const OptionRow> commonOptions() {
    return commonRows;
}

const CommandRow& row(Command command) {
    return *std::ranges::find(commandRows, command, &CommandRow::command);
}

const CommandRow* named(const QString& name) {
    const auto* const found = std::ranges::find_if(
        commandRows, [&](const CommandRow& known) { return name == QLatin1String(known.name); });
    return found == commandRows.end() ? nullptr : found;
}

}  // namespace CommandTable
