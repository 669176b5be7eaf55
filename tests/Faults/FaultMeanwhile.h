// What happens to a program while one of its calls pauses.
#pragma once

#include "FaultWorld.h"

class CliProgram;

namespace FaultMeanwhile {

// To the program: these wait for its end, unless it goes on.
void interrupted(FaultWorld& world, CliProgram& program);
void terminated(FaultWorld& world, CliProgram& program);
void hungUp(FaultWorld& world, CliProgram& program);
void interruptedTwice(FaultWorld& world, CliProgram& program);
void groupInterrupted(FaultWorld& world, CliProgram& program);
void killed(FaultWorld& world, CliProgram& program);
void suspended(FaultWorld& world, CliProgram& program);  // with its tools, and resumed

// To the drive and its disc.
void unplugged(FaultWorld& world, CliProgram& program);
void discTaken(FaultWorld& world, CliProgram& program);
void discChanged(FaultWorld& world, CliProgram& program);

// To the folders that are written to.
void destinationGone(FaultWorld& world, CliProgram& program);
void otherDestinationGone(FaultWorld& world, CliProgram& program);
void temporaryFolderGone(FaultWorld& world, CliProgram& program);
void otherFileCame(FaultWorld& world, CliProgram& program);  // at both destinations
void dataFolderGone(FaultWorld& world, CliProgram& program);

}  // namespace FaultMeanwhile
