#include "HelpText.h"

#include "PreferenceTable.h"

namespace {

QString programHelp() {
    return QStringLiteral(R"(Usage: spindrift-cli COMMAND [OPTION]...
Makes raw ISO images of optical discs.

Commands:
  status                    the drive and the disc in it
  rip --output FILE         make an ISO image of the disc
  speed-test                measure how fast the drive reads the disc
  history                   the speeds measured so far, newest first
  nickname [TEXT]           show, set or (with an empty TEXT) remove the drive's nickname
  eject                     eject the disc
  access                    tell whether this user may read discs
  settings [KEY [VALUE]]    show or change the preferences

Options of every command:
  --json                    print one JSON object a line
  --practice [FILE.iso]     use the practice drive, with this image (else a sample) as its disc
  -h, --help                this help, or the help of the command
  -V, --version             the version

Exit status: 0 done, 1 failed, 2 verification did not match, 64 wrong usage, 130 cancelled.
)");
}

QString settingsHelp() {
    QString keys;
    for (const PreferenceRow& row : preferenceTable) {
        keys += QStringLiteral("  %1%2\n")
                    .arg(QLatin1String(row.key), -26)
                    .arg(QLatin1String(row.help));
    }
    return QStringLiteral(R"(Usage: spindrift-cli settings [KEY [VALUE]] [--json]
Shows all preferences, or one, or changes one. VALUE is true, false, on or off. The keys:

%1
The preferences are the window's; "rip" goes by its own options.
)")
        .arg(keys);
}

QString commandHelp(Command command) {
    switch (command) {
        case Command::Settings:
            return settingsHelp();
        case Command::Status:
            return QStringLiteral(R"(Usage: spindrift-cli status [--json] [--practice [FILE.iso]]
Asks the drive once and shows the drive and its disc.

With --json one object: "driveDetected", "driveIdentity", "disc" and "lastError".
Exit status: 0 a drive answered, 1 none did.
)");
        case Command::Rip:
            return QStringLiteral(R"(Usage: spindrift-cli rip --output FILE [OPTION]...
Makes an ISO image of the disc in the drive. Ctrl-C cancels; while the image is being verified,
the image is kept.

  -o, --output FILE         the image to write
  --thorough                read the disc a second time and compare SHA-256 digests
  --eject                   eject the disc after the image has been verified
  --force                   replace FILE if it is there; a cancelled rip removes it
  --json                    print every change: {"property": name, "value": value}
  --practice [FILE.iso]     use the practice drive

A FILE whose name begins with "-" is given as --output=FILE or after "--".
Exit status: 0 done, 1 failed, 2 the image does not match the disc, 130 cancelled.
)");
        case Command::SpeedTest:
            return QStringLiteral(
                R"(Usage: spindrift-cli speed-test [--json] [--practice [FILE.iso]]
Reads the whole disc, keeps nothing of it and records the average speed in the history. Ctrl-C
cancels. With --json every change is printed: {"property": name, "value": value}.
)");
        case Command::History:
            return QStringLiteral(R"(Usage: spindrift-cli history [--json]
Shows the measured speeds, newest first. With --json one object a result, with its "multiple" of
the disc kind's single speed and the drive's "nickname".
)");
        case Command::Nickname:
            return QStringLiteral(
                R"(Usage: spindrift-cli nickname [TEXT] [--json] [--practice [FILE.iso]]
Shows the nickname of the drive. With TEXT, gives the drive that nickname; with an empty TEXT,
removes it.

A TEXT that would follow --practice goes before it: nickname TEXT --practice.
)");
        case Command::Eject:
            return QStringLiteral(R"(Usage: spindrift-cli eject [--json] [--practice [FILE.iso]]
Ejects the disc that is in the drive. Exit status: 0 ejected, 1 not.
)");
        case Command::Access:
            return QStringLiteral(R"(Usage: spindrift-cli access [--json] [--practice [FILE.iso]]
Tells whether this user may read the discs in the optical drives, and if not, how to change that.
Exit status: 0 allowed, 1 not.
)");
    }
    Q_UNREACHABLE();
}

}  // namespace

QString helpText(std::optional<Command> command) {
    return command ? commandHelp(*command) : programHelp();
}

QString versionText() {
    return QStringLiteral("spindrift-cli " SPINDRIFT_VERSION "\n");
}
