// In which order the system calls of a run make, move, remove and synchronise files: after none of
// them would a power cut leave less than there was before.
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include "DiskModel.h"
#include "FaultRules.h"
#include "Skipping.h"
#include "SmallFileSystem.h"

namespace {

using FaultRules::Task;

constexpr qsizetype discBytes = 700 * 2048;

struct Call {
    QString name;
    QStringList paths;  // what stands in quotes, or the path behind the descriptor
    qint64 result = -1;
    QString flags;
    std::string line;
};

// Calls that change something count from their beginning, those that make it safe from their end.
bool makesSafe(const QString& name) {
    return name == QLatin1String("fsync") || name == QLatin1String("fdatasync");
}

Call callIn(const QString& line) {
    static const QRegularExpression whole(QStringLiteral("^\\d+ +(\\w+)\\((.*)\\) += (-?\\d+).*$"));
    static const QRegularExpression quoted(QStringLiteral("\"([^\"]*)\""));
    static const QRegularExpression behind(QStringLiteral("^\\d+<([^>]*)>"));
    Call call;
    const auto match = whole.match(line);
    if (!match.hasMatch()) {
        return call;
    }
    call.name = match.captured(1);
    call.flags = match.captured(2);
    call.result = match.captured(3).toLongLong();
    call.line = line.toStdString();
    if (const auto descriptor = behind.match(call.flags); descriptor.hasMatch()) {
        call.paths = QStringList{descriptor.captured(1)};
    } else {
        for (auto all = quoted.globalMatch(call.flags); all.hasNext();) {
            call.paths += all.next().captured(1);
        }
    }
    return call;
}

// The calls in the order in which they count. One that others interrupt is told in two lines.
std::vector<Call> callsIn(const QByteArray& trace) {
    std::vector<Call> calls;
    QMap<QString, std::pair<QString, std::size_t>> begun;  // by process: the line and its place
    static const QRegularExpression resumed(
        QStringLiteral("^(\\d+) +<\\.\\.\\. \\w+ resumed>(.*)$"));
    const QString cut = QStringLiteral(" <unfinished ...>");
    for (QString line : QString::fromUtf8(trace).split(QLatin1Char('\n'))) {
        const QString process = line.section(QLatin1Char(' '), 0, 0);
        if (line.endsWith(cut)) {
            line.chop(cut.size());
            begun[process] = {line, calls.size()};
            calls.emplace_back();
            continue;
        }
        const auto rest = resumed.match(line);
        if (!rest.hasMatch()) {
            calls.push_back(callIn(line));
            continue;
        }
        const auto [beginning, place] = begun[process];
        const Call call = callIn(beginning + rest.captured(2));
        if (makesSafe(call.name)) {
            calls.push_back(call);
        } else {
            calls[place] = call;
        }
    }
    return calls;
}

void apply(const Call& call, DiskModel& disk) {
    if (call.result < 0 || call.paths.isEmpty()) {
        return;
    }
    const QString& first = call.paths.first();
    if (call.name == QLatin1String("openat") && call.flags.contains(QLatin1String("O_CREAT"))) {
        disk.created(first);
    } else if (call.name.contains(QLatin1String("write"))) {
        disk.written(first, call.result);
    } else if (call.name.startsWith(QLatin1String("rename"))) {
        disk.moved(first, call.paths.last());
    } else if (call.name.startsWith(QLatin1String("link"))) {
        disk.linked(first, call.paths.last());
    } else if (call.name.startsWith(QLatin1String("unlink"))) {
        disk.removed(first);
    } else if (makesSafe(call.name)) {
        disk.synchronised(first);
    }
}

class DurabilityOrder : public testing::Test {
protected:
    static bool mayTrace() {
        QProcess strace;
        strace.start(QStringLiteral("strace"),
                     {QStringLiteral("-o"), QStringLiteral("/dev/null"), QStringLiteral("true")});
        return strace.waitForFinished(100'000) && strace.exitStatus() == QProcess::NormalExit &&
               strace.exitCode() == 0;
    }

    // Runs the program and follows its calls.
    void follow(Task run, DiskModel& disk, bool makesRoom = false) {
        const QString trace = world.folder.path(QStringLiteral("trace"));
        QProcess strace;
        strace.start(
            QStringLiteral("strace"),
            QStringList{QStringLiteral("-f"), QStringLiteral("-y"), QStringLiteral("-o"), trace,
                        QStringLiteral("-s"), QStringLiteral("4096"), QStringLiteral("-e"),
                        QStringLiteral("trace=openat,write,pwrite64,rename,renameat,"
                                       "renameat2,link,linkat,unlink,unlinkat,fsync,"
                                       "fdatasync"),
                        QStringLiteral(SPINDRIFT_CLI)} +
                world.arguments(FaultRules::wordsOf(run)));
        ASSERT_TRUE(strace.waitForFinished(100'000));
        ASSERT_EQ(strace.exitCode(), 0) << strace.readAllStandardError().toStdString();
        const int safeBefore = disk.safeFiles();
        bool newWasSafe = false;
        for (const Call& call : callsIn(TestFolder::read(trace).value_or(QByteArray()))) {
            apply(call, disk);
            EXPECT_TRUE(disk.safeFiles() >= safeBefore || makesRoom) << "lost: " << call.line;
            EXPECT_TRUE(disk.isNewFileSafe() || !newWasSafe) << "the new one: " << call.line;
            newWasSafe = newWasSafe || disk.isNewFileSafe();
        }
        EXPECT_TRUE(newWasSafe);
    }

    DiskModel diskOf(const QString& target) const {
        DiskModel disk({{world.same(), 0},
                        {world.folder.path(QStringLiteral("tmp")), 0},
                        {QFileInfo(target).path(), target.startsWith(world.same()) ? 0 : 1}});
        disk.setWholeSize(discBytes);
        return disk;
    }

    QString same() const { return world.same() + QStringLiteral("/disc.iso"); }
    QString other() const { return world.other() + QStringLiteral("/disc.iso"); }

    FaultWorld world{discBytes};
};

#define NEEDS_TRACING()                                            \
    do {                                                           \
        if (!mayTrace()) {                                         \
            SKIP_BECAUSE("strace may not look at processes here"); \
        }                                                          \
    } while (false)

TEST_F(DurabilityOrder, ARipIsSafeUnderOneNameOrTheOther) {
    NEEDS_TRACING();
    DiskModel disk = diskOf(same());
    follow(Task::Rip, disk);
    EXPECT_TRUE(disk.isNewFileSafe());
}

TEST_F(DurabilityOrder, AThoroughRipTouchesNothingThatIsSafe) {
    NEEDS_TRACING();
    DiskModel disk = diskOf(same());
    follow(Task::ThoroughRip, disk);
    EXPECT_TRUE(disk.isNewFileSafe());
}

TEST_F(DurabilityOrder, AReplacedFileIsSafeUntilTheNewOneIs) {
    NEEDS_TRACING();
    world.writeOld(same());
    DiskModel disk = diskOf(same());
    disk.addOld(same());
    follow(Task::ReplacingRip, disk);
    EXPECT_TRUE(disk.isNewFileSafe());
}

TEST_F(DurabilityOrder, TheOriginalOfACopyGoesWhenTheDiskKnowsTheCopy) {
    NEEDS_TRACING();
    NEEDS_ANOTHER_FILE_SYSTEM(OtherFileSystem(world.folder));
    DiskModel disk = diskOf(other());
    follow(Task::Copy, disk);
    EXPECT_TRUE(disk.isNewFileSafeAt(other()));
}

TEST_F(DurabilityOrder, AReplacedFileOnAnotherFileSystemIsSafeUntilTheCopyIs) {
    NEEDS_TRACING();
    NEEDS_ANOTHER_FILE_SYSTEM(OtherFileSystem(world.folder));
    world.writeOld(other());
    DiskModel disk = diskOf(other());
    disk.addOld(other());
    follow(Task::ReplacingCopy, disk);
    EXPECT_TRUE(disk.isNewFileSafeAt(other()));
}

// The old one goes first here: two have no room. The temporary image is safe all the time.
TEST_F(DurabilityOrder, WhereOnlyOneImageHasRoomTheNewOneIsSafeBeforeTheOldOneGoes) {
    NEEDS_TRACING();
    NEEDS_ANOTHER_FILE_SYSTEM(OtherFileSystem(world.folder));
    const SmallFileSystem small(world.other(), "2M");
    NEEDS_A_SMALL_FILE_SYSTEM(small);
    QFile old(other());
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    ASSERT_EQ(old.write(QByteArray(discBytes, 'x')), discBytes);
    old.close();
    DiskModel disk = diskOf(other());
    disk.addOld(other());
    follow(Task::ReplacingCopy, disk, true);
    EXPECT_TRUE(disk.isNewFileSafeAt(other()));
}

TEST_F(DurabilityOrder, ChangedSettingsAreSafeBeforeTheyReplaceTheOldOnes) {
    NEEDS_TRACING();
    FaultRules::prepare(world, Task::Settings);
    const QString folder = world.folder.path(QStringLiteral("config/Spindrift"));
    const QString file = folder + QStringLiteral("/Spindrift.conf");
    DiskModel disk({{folder, 0}});
    disk.setWholeSize(TestFolder::read(file)->size() + qsizetype(sizeof("ejectWhenDone=true")));
    disk.addOld(file);
    follow(Task::Settings, disk);
    EXPECT_TRUE(disk.isNewFileSafeAt(file));
}

}  // namespace
