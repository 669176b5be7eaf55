#include "BackgroundThread.h"

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <system_error>
#include <thread>

namespace {

constexpr int lowNiceness = 10;

}  // namespace

int BackgroundThread::start(Priority priority, const std::function<void()>& work) {
    // A new thread inherits the mask of the one that starts it.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    int error = 0;
    try {
        std::thread([priority, work] {
            if (priority == Priority::Low) {
                // On Linux niceness belongs to the thread.
                setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), lowNiceness);
            }
            work();
        }).detach();
    } catch (const std::system_error& failure) {
        error = failure.code().value();
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error;
}
