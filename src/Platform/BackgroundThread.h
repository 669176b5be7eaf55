// Work on a thread of its own that the end of the program does not wait for by itself. The only way
// in which the application starts threads.
#pragma once

#include <chrono>
#include <functional>

namespace BackgroundThread {

enum class Priority { Normal, Low };  // Low: also for the child processes that the work starts

enum class Life { Passing, Unawaited };  // Unawaited: waitForPassing() does not count it

// 0, or the error number with which no thread could be started; the work is not run then. The
// thread takes no signals.
int start(Priority priority, const std::function<void()>& work, Life life = Life::Passing);

// Waits until all passing work is done, at most this long; for programs that end right after the
// result of their work, which may still have to tidy up. Any thread but those started here.
bool waitForPassing(std::chrono::milliseconds limit);

}  // namespace BackgroundThread
