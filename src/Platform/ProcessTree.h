// Stopping a tool together with what it has started.
#pragma once

class ChildProcess;

namespace ProcessTree {

// Asks the process to terminate and has /usr/bin/pkill signal its children. Returns at once: pkill
// is neither waited for nor asked how it went, and one that cannot be started is ignored. Any
// thread.
void terminate(ChildProcess& process);

}  // namespace ProcessTree
