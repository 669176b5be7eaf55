#include "FaultRules.h"

#include <algorithm>

namespace {

using FaultRules::Task;

bool isCopy(Task run) {
    return run == Task::Copy || run == Task::ReplacingCopy;
}

bool has(const QStringList& files, const QString& file) {
    return files.contains(file);
}

bool hasAny(const QStringList& files, const QString& piece) {
    return std::any_of(files.begin(), files.end(),
                       [&piece](const QString& file) { return file.contains(piece); });
}

// Of what the run was to do.
std::string brokenPromise(Task run, const QStringList& files, int status) {
    const QString stored =
        QStringLiteral("config/Spindrift.conf=[General],thoroughVerify=true,ejectWhenDone=true");
    if (run == Task::Settings) {
        const bool isStored = has(files, stored);
        if (status == 0 && !isStored) {
            return "the setting is not stored";
        }
        return isStored || has(files, QStringLiteral(
                                          "config/Spindrift.conf=[General],thoroughVerify=true"))
                   ? ""
                   : "the settings are lost";
    }
    if (run == Task::SpeedTest) {
        return "";
    }
    const QString place = isCopy(run) ? QStringLiteral("other") : QStringLiteral("same");
    if (has(files, place + QStringLiteral("/disc.iso=disc"))) {
        return "";
    }
    return status == 0 ? "there is no image" : "";
}

}  // namespace

QString FaultRules::wordsOf(Task run) {
    switch (run) {
        case Task::Rip:
            return QStringLiteral("rip -o SAME");
        case Task::ReplacingRip:
            return QStringLiteral("rip --force -o SAME");
        case Task::Copy:
            return QStringLiteral("rip -o OTHER");
        case Task::ReplacingCopy:
            return QStringLiteral("rip --force -o OTHER");
        case Task::ThoroughRip:
            return QStringLiteral("rip --thorough -o SAME");
        case Task::SpeedTest:
            return QStringLiteral("speed-test");
        case Task::Settings:
            break;
    }
    return QStringLiteral("settings ejectWhenDone true");
}

QString FaultRules::targetOf(Task run) {
    return isCopy(run) ? QStringLiteral("OTHER") : QStringLiteral("SAME");
}

void FaultRules::prepare(const FaultWorld& world, Task run) {
    if (run == Task::ReplacingCopy || run == Task::ReplacingRip) {
        world.writeOld((isCopy(run) ? world.other() : world.same()) + QStringLiteral("/disc.iso"));
    } else if (run == Task::Settings) {
        world.writeStores("Preferences");
    }
}

std::string FaultRules::broken(const FaultWorld& world, Task run, const FaultWorld::Ending& ending,
                               const Allowed& allowed) {
    const std::string left = world.left();
    const QStringList files = QString::fromStdString(left).split(QLatin1Char(' '));
    const int status = ending.status;
    if (status != 0 && status != 1 && !(allowed.signal && (status == -1 || status == 130))) {
        return "the status is " + std::to_string(status);
    }
    if (status == 1 && ending.says.empty() && !allowed.silence) {
        return "it fails without a word";
    }
    if (hasAny(files, QStringLiteral("WRONG")) || hasAny(files, QStringLiteral("disc.iso=part")) ||
        hasAny(files, QStringLiteral("disc.iso=empty"))) {
        return "there is a wrong image: " + left;
    }
    // What a failed rip has read stays, and nothing else.
    const bool mayLeaveAll = allowed.temporaryFiles || status == -1;
    if (!mayLeaveAll &&
        (hasAny(files, QStringLiteral(".part=")) || hasAny(files, QStringLiteral("tmp/verify")) ||
         hasAny(files, QStringLiteral("tmp/speedtest")) ||
         hasAny(files, QStringLiteral("Spindrift.conf.")) ||
         (status != 1 && hasAny(files, QStringLiteral("tmp/"))))) {
        return "it leaves " + left;
    }
    const bool hadToMakeRoom = ending.says.find("No space left") != std::string::npos ||
                               ending.says.find("quota") != std::string::npos;
    const bool replaces = run == Task::ReplacingCopy || run == Task::ReplacingRip;
    if (replaces && status == 1 && !hadToMakeRoom && !hasAny(files, QStringLiteral("/disc.iso="))) {
        return "the old file is lost";
    }
    if (hasAny(files, QStringLiteral("speedlog.json=broken")) && !allowed.brokenHistory) {
        return "the history is broken";
    }
    return brokenPromise(run, files, status);
}
