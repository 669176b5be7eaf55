// Stopping a tool together with what it has started, or with this program.
#pragma once

class ChildProcess;

namespace ProcessTree {

// Asks the process to terminate and has /usr/bin/pkill signal its children. Returns at once: pkill
// is neither waited for nor asked how it went, and one that cannot be started is ignored. Any
// thread.
void terminate(ChildProcess& process);

// Asks every child of this process to terminate, likewise. Any thread.
void terminateChildren();

// From now on the tools that this process starts learn whom to watch, by SPINDRIFT_WATCH_PID in
// their environment: one that reads a disc ends, and takes its image along, when this process has
// gone. Call once, before any thread is started.
void letToolsWatchThisProcess();

}  // namespace ProcessTree
