// The whole of spindrift-cli but its main function.
#pragma once

// Reads the arguments, does what they ask for and gives back the exit status. Makes the
// QCoreApplication; call once, on the main thread.
int runCommandLine(int argc, char** argv);
