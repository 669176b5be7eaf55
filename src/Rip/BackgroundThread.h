// Work on a thread of its own that nobody waits for, not even the end of the program.
#pragma once

#include <functional>

namespace BackgroundThread {

enum class Priority { Normal, Low };  // Low: also for the child processes that the work starts

// 0, or the error number with which no thread could be started; the work is not run then. The
// thread takes no signals.
int start(Priority priority, const std::function<void()>& work);

}  // namespace BackgroundThread
