#include "BackgroundThread.h"

#include <sys/resource.h>
#include <unistd.h>

#include <condition_variable>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>

namespace {

constexpr int lowNiceness = 10;

// How many pieces of passing work run. Never destroyed: they may outlive the main thread's end.
class Passing final {
public:
    static Passing& instance() {
        static auto* const passing = new Passing;
        return *passing;
    }

    void add(int difference) {
        const std::lock_guard lock(m_mutex);
        m_count += difference;
        m_changed.notify_all();
    }

    bool wait(std::chrono::milliseconds limit) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [this] { return m_count == 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};

}  // namespace

int BackgroundThread::start(Priority priority, const std::function<void()>& work, Life life) {
    const int counted = life == Life::Passing ? 1 : 0;
    Passing::instance().add(counted);
    // A new thread inherits the mask of the one that starts it.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    int error = 0;
    try {
        std::thread([priority, work, counted] {
            if (priority == Priority::Low) {
                // On Linux niceness belongs to the thread.
                setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), lowNiceness);
            }
            work();
            Passing::instance().add(-counted);
        }).detach();
    } catch (const std::system_error& failure) {
        error = failure.code().value();
        Passing::instance().add(-counted);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error;
}

bool BackgroundThread::waitForPassing(std::chrono::milliseconds limit) {
    return Passing::instance().wait(limit);
}
