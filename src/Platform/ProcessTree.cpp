#include "ProcessTree.h"

#include <unistd.h>

#include "ChildProcess.h"
#include "ToolRoot.h"

void ProcessTree::terminate(ChildProcess& process) {
    const pid_t identifier = process.processIdentifier();
    process.terminate();
    if (identifier < 1) {
        return;
    }
    ChildProcess pkill(ToolRoot::resolve(QStringLiteral("/usr/bin/pkill")),
                       {QStringLiteral("-P"), QString::number(identifier)});
    pkill.launch();
}

void ProcessTree::letToolsWatchThisProcess() {
    qputenv("SPINDRIFT_WATCH_PID", QByteArray::number(::getpid()));
}
