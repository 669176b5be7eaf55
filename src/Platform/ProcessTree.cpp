#include "ProcessTree.h"

#include <unistd.h>

#include "ChildProcess.h"
#include "ToolRoot.h"

namespace {

void terminateChildrenOf(pid_t identifier) {
    ChildProcess pkill(ToolRoot::resolve(QStringLiteral("/usr/bin/pkill")),
                       {QStringLiteral("-P"), QString::number(identifier)});
    pkill.launch();
}

}  // namespace

void ProcessTree::terminate(ChildProcess& process) {
    const pid_t identifier = process.processIdentifier();
    process.terminate();
    if (identifier >= 1) {
        terminateChildrenOf(identifier);
    }
}

void ProcessTree::terminateChildren() {
    terminateChildrenOf(::getpid());
}

void ProcessTree::letToolsWatchThisProcess() {
    qputenv("SPINDRIFT_WATCH_PID", QByteArray::number(::getpid()));
}
