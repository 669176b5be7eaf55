// The one call of posix_spawn, with everything that surrounds it. Any thread; used by ChildProcess.
#pragma once

#include <sys/types.h>

#include <QString>
#include <QStringList>
#include <array>

#include "ChildProcess.h"
#include "Descriptor.h"

namespace Spawn {

struct Result {
    int error = 0;  // an error number; 0 when the child runs
    pid_t pid = 0;
    // The parent's ends of the pipes of standard output and error; not open for other streams.
    std::array<Descriptor, 2> readEnds;
};

// variables: "NAME=value", in place of this process's own of these names.
Result start(const QString& executable, const QStringList& arguments,
             const std::array<ChildProcess::Stream, 2>& streams, const QStringList& variables);

}  // namespace Spawn
