#include "FaultMeanwhile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <csignal>

#include "CliProgram.h"

namespace {

void sendAndWait(CliProgram& program, int number) {
    program.sendSignal(number);
    program.exitStatus();
}

void removeAll(const QString& folder) {
    EXPECT_TRUE(QDir(folder).removeRecursively());
}

}  // namespace

void FaultMeanwhile::interrupted(FaultWorld&, CliProgram& program) {
    sendAndWait(program, SIGINT);
}

void FaultMeanwhile::terminated(FaultWorld&, CliProgram& program) {
    sendAndWait(program, SIGTERM);
}

void FaultMeanwhile::hungUp(FaultWorld&, CliProgram& program) {
    sendAndWait(program, SIGHUP);
}

void FaultMeanwhile::interruptedTwice(FaultWorld&, CliProgram& program) {
    program.sendSignal(SIGINT);
    sendAndWait(program, SIGINT);
}

void FaultMeanwhile::groupInterrupted(FaultWorld&, CliProgram& program) {
    program.sendSignalToGroup(SIGINT);
    program.exitStatus();
}

void FaultMeanwhile::killed(FaultWorld&, CliProgram& program) {
    sendAndWait(program, SIGKILL);
}

void FaultMeanwhile::suspended(FaultWorld&, CliProgram& program) {
    EXPECT_TRUE(program.stop());
    program.sendSignalToGroup(SIGSTOP);
    program.sendSignalToGroup(SIGCONT);
}

void FaultMeanwhile::unplugged(FaultWorld& world, CliProgram&) {
    world.writeDrive(R"(, "noDrive": true)");
}

void FaultMeanwhile::discTaken(FaultWorld& world, CliProgram&) {
    EXPECT_TRUE(QFile::remove(world.drive() + QStringLiteral("/disc.iso")));
}

void FaultMeanwhile::discChanged(FaultWorld& world, CliProgram&) {
    world.putIn(QByteArray(world.disc()).replace(0, 5, "other"));
}

void FaultMeanwhile::destinationGone(FaultWorld& world, CliProgram&) {
    removeAll(world.same());
}

void FaultMeanwhile::otherDestinationGone(FaultWorld& world, CliProgram&) {
    removeAll(world.other());
}

void FaultMeanwhile::temporaryFolderGone(FaultWorld& world, CliProgram&) {
    removeAll(world.folder.path(QStringLiteral("tmp")));
}

void FaultMeanwhile::otherFileCame(FaultWorld& world, CliProgram&) {
    world.writeOld(world.same() + QStringLiteral("/disc.iso"));
    if (world.hasOther()) {
        world.writeOld(world.other() + QStringLiteral("/disc.iso"));
    }
}

void FaultMeanwhile::dataFolderGone(FaultWorld& world, CliProgram&) {
    removeAll(world.folder.path(QStringLiteral("data")));
}
