// The child processes of one verification, so that a cancellation can reach them.
//
// Shared by the rip engine (main thread) and the verification's thread. The lock guards the list
// and is never held while a process is started, waited for or ended.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "ChildProcess.h"

class VerifyProcesses final {
public:
    using List = std::vector<std::shared_ptr<ChildProcess>>;

    void track(std::shared_ptr<ChildProcess> process) {
        const std::lock_guard lock(m_lock);
        m_active.push_back(std::move(process));
    }

    List copy() const {
        const std::lock_guard lock(m_lock);
        return m_active;
    }

    void clear() {
        List dropped;
        const std::lock_guard lock(m_lock);
        dropped.swap(m_active);
    }

private:
    mutable std::mutex m_lock;
    List m_active;
};
