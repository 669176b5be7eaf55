// The program from its command line to its exit status.
#pragma once

// Runs the whole program; the arguments are main()'s. Exit status 0: done, 1: no display, too few
// free descriptors or no practice drive, 64: the command line makes no sense, 128 and more: a
// signal has ended it.
int launch(int argc, char** argv);
