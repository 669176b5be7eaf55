#include "QuickCommands.h"

#include <QFileInfo>
#include <QLocale>
#include <nlohmann/json.hpp>

#include "ByteCount.h"
#include "DiagnosticsStore.h"
#include "DiscEjector.h"
#include "FullDiskAccess.h"
#include "JsonText.h"
#include "OpticalDriveMonitor.h"
#include "PracticeFolder.h"

using Json = nlohmann::ordered_json;

namespace {

QString describeDrive(const std::optional<DriveIdentity>& drive) {
    return QStringLiteral("Drive:  ") +
           (drive ? drive->modelString() : QStringLiteral("one that does not give its name")) +
           QLatin1Char('\n');
}

QString describeDisc(const OpticalDisc& disc) {
    QString text = QStringLiteral("Disc:   %1\nType:   %2\nDevice: /dev/%3")
                       .arg(disc.displayName(), disc.rawType, disc.bsdName);
    if (disc.imageSourceBSDName != disc.bsdName) {
        text += QStringLiteral(", imaged from /dev/") + disc.imageSourceBSDName;
    }
    text += QStringLiteral("\nSize:   ");
    text += disc.totalBytes ? QStringLiteral("%1 (%2 bytes)")
                                  .arg(ByteCount::format(*disc.totalBytes))
                                  .arg(*disc.totalBytes)
                            : QStringLiteral("not known");
    return text + QLatin1Char('\n');
}

// The drive's identity by one poll; says why when there is none.
std::optional<DriveIdentity> presentDrive(const CommandContext& context) {
    OpticalDriveMonitor monitor;
    monitor.poll();
    if (!monitor.driveIdentity()) {
        context.complain(monitor.lastError() ? monitor.lastError()->trimmed()
                                             : QStringLiteral("The drive does not give its name."));
    }
    return monitor.driveIdentity();
}

QString historyLine(const SpeedTestResult& result, const std::optional<QString>& nickname) {
    const QString date = result.date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    return QStringLiteral("%1  %2  %3  %4  %5  %6  %7\n")
        .arg(date, result.discKind.leftJustified(4),
             ByteCount::format(result.discSizeBytes).rightJustified(9),
             ByteCount::formatSpeed(result.averageBytesPerSecond).rightJustified(10),
             speedMultipleText(result).rightJustified(6), rawValue(result.source).leftJustified(10),
             nickname.value_or(result.driveModelString));
}

std::optional<QString> nicknameOf(const DiagnosticsStore& store, const QString& driveKey) {
    const auto found = store.nicknames().constFind(driveKey);
    return found == store.nicknames().cend() ? std::nullopt : std::optional(*found);
}

}  // namespace

int QuickCommands::status(const CommandContext& context) {
    OpticalDriveMonitor monitor;
    monitor.poll();
    if (context.invocation.json) {
        context.output.write(
            JsonText::line(Json{{"driveDetected", monitor.driveDetected()},
                                {"driveIdentity", JsonText::drive(monitor.driveIdentity())},
                                {"disc", JsonText::disc(monitor.disc())},
                                {"lastError", JsonText::text(monitor.lastError())}}));
    } else if (!monitor.lastError()) {
        context.output.write(describeDrive(monitor.driveIdentity()) +
                             (monitor.disc() ? describeDisc(*monitor.disc())
                                             : QStringLiteral("No disc inserted.\n")));
    } else {
        context.complain(monitor.lastError()->trimmed());
    }
    return monitor.lastError() ? ExitStatus::failed : ExitStatus::done;
}

int QuickCommands::history(const CommandContext& context) {
    const DiagnosticsStore store;
    for (const SpeedTestResult& result : store.results()) {
        const auto nickname = nicknameOf(store, result.driveKey);
        if (context.invocation.json) {
            context.output.write(JsonText::line(JsonText::historyEntry(result, nickname)));
        } else {
            context.output.write(historyLine(result, nickname));
        }
    }
    if (store.results().isEmpty() && !context.invocation.json) {
        context.output.write(QStringLiteral("No speed tests recorded yet.\n"));
    }
    return ExitStatus::done;
}

int QuickCommands::nickname(const CommandContext& context) {
    const auto drive = presentDrive(context);
    if (!drive) {
        return ExitStatus::failed;
    }
    using OtherPrograms = DiagnosticsStore::OtherPrograms;
    DiagnosticsStore store(nullptr, context.invocation.operands.isEmpty() ? OtherPrograms::MayWrite
                                                                          : OtherPrograms::Wait);
    if (!context.invocation.operands.isEmpty()) {
        store.setNickname(context.invocation.operands.constFirst(), *drive);
        // What the store could not write it keeps in memory, where the next program is not.
        if (DiagnosticsStore().nicknames() != store.nicknames()) {
            context.complain(
                QStringLiteral("“%1” could not be written.").arg(store.nicknamesPath()));
            return ExitStatus::failed;
        }
    }
    const auto nickname = store.nickname(*drive);
    if (context.invocation.json) {
        context.output.write(
            JsonText::line(Json{{"driveKey", drive->driveKey().toStdString()},
                                {"driveModelString", drive->modelString().toStdString()},
                                {"nickname", JsonText::text(nickname)}}));
    } else if (nickname) {
        context.output.write(*nickname + QLatin1Char('\n'));
    } else {
        context.errors.write(drive->modelString() + QStringLiteral(" has no nickname.\n"));
    }
    return ExitStatus::done;
}

int QuickCommands::eject(const CommandContext& context) {
    OpticalDriveMonitor monitor;
    monitor.poll();
    bool ejected = false;
    if (monitor.disc()) {
        ejected = DiscEjector::eject(monitor.disc()->bsdName);
        if (!ejected) {
            context.complain(QStringLiteral("The disc couldn't be ejected."));
        }
    } else {
        context.complain(
            monitor.lastError().value_or(QStringLiteral("No disc inserted.")).trimmed());
    }
    if (context.invocation.json) {
        context.output.write(JsonText::line(Json{{"ejected", ejected}}));
    }
    return ejected ? ExitStatus::done : ExitStatus::failed;
}

int QuickCommands::access(const CommandContext& context) {
    const bool granted = FullDiskAccess::isGranted();
    const auto practice = PracticeFolder::chosen();
    const bool isMalformed = !granted && practice && !practice->deniesAccess();
    if (isMalformed) {
        context.complain(QStringLiteral("“%1” is malformed: it must hold one JSON object, in which "
                                        "“denyAccess” is true or false.")
                             .arg(practice->settings()));
    }
    if (context.invocation.json) {
        context.output.write(JsonText::line(Json{{"granted", granted}}));
    } else if (granted) {
        context.output.write(QStringLiteral("This user may read discs.\n"));
    } else if (!isMalformed) {
        context.output.write(accessGuidance());
    }
    return granted ? ExitStatus::done : ExitStatus::failed;
}

QString accessGuidance() {
    for (const QString& file : FullDiskAccess::probeFiles()) {
        if (QFileInfo::exists(file)) {
            return QStringLiteral(
                       "This user may not read discs: opening “%1” is not permitted.\n"
                       "At the computer itself, logging in to the desktop gives access. Elsewhere, "
                       "join\n"
                       "the group that owns the drive, then log in again:\n"
                       "  Debian, Ubuntu, Fedora:  sudo usermod -aG cdrom \"$USER\"\n"
                       "  Arch:                    sudo usermod -aG optical \"$USER\"\n")
                .arg(file);
        }
    }
    return QStringLiteral(
        "No optical drive was found that could be asked for access.\n"
        "Connect a drive, or try the practice drive with --practice.\n");
}
