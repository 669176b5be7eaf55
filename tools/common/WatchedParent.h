// The program that started this tool and must not be outlived by it, as SPINDRIFT_WATCH_PID names
// it. Without the variable nobody is watched.
//
// A process is watched, not, as by the parent-death signal, the thread in it that started the tool.
// Any thread.
#pragma once

#include <sys/types.h>

#include <optional>

#include "DescriptorHolder.h"

class WatchedParent final {
public:
    static constexpr const char* environmentVariable = "SPINDRIFT_WATCH_PID";

    WatchedParent();

    // Whether the variable names a program that has ended, or one that never started this tool.
    bool isGone() const;
    // Waits until it is; for ever when nobody is watched.
    void waitUntilGone() const;

private:
    const std::optional<pid_t> m_process;
    const DescriptorHolder m_descriptor;  // the process's pidfd
};
