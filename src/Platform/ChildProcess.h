// One child process: started with posix_spawn, followed from a background thread.
//
// Owned by whoever starts it (shared, because its callbacks may outlive the owner). Set it up,
// launch() once, then use it from any thread. Standard input is inherited. Dropping the last
// reference neither ends nor waits for the child; it is reaped all the same, and its handlers are
// still called. All descriptors of the parent's side are close-on-exec. The child starts with no
// signal blocked and every signal at its default, but for SIGHUP, SIGINT and SIGQUIT that this
// program was started to ignore (nohup).
#pragma once

#include <sys/types.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

class ChildProcess final {
public:
    enum class Stream { Inherited, Null, Pipe };
    enum class Output { Standard, Error };

    // Called on a background thread with each chunk, in order; never empty.
    using ChunkHandler = std::function<void(const QByteArray& chunk)>;
    // Called once on a background thread, after every chunk that was left in the pipes; what a
    // grandchild writes later is lost. The status is the exit status, or the number of the signal
    // that ended the child.
    using ExitHandler = std::function<void(int status)>;

    // The executable is an absolute path that is started as it stands (see ToolRoot).
    ChildProcess(QString executable, QStringList arguments);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Before launch() only. Both streams are inherited unless set. A pipe with a handler is read in
    // the background; one without is read with readToEnd() after wait(). The handlers, and what
    // they hold, are dropped once the exit has been delivered. A handler must not call wait().
    void setStream(Output output, Stream stream);
    // "NAME=value"; the child gets them in place of what it would inherit under these names.
    void setVariables(QStringList variables);
    void setChunkHandler(Output output, ChunkHandler handler);
    void setExitHandler(ExitHandler handler);

    // Starts the child; absent on success, otherwise the error number's standard text. No handler
    // is ever called after a failed launch.
    std::optional<QString> launch();

    // 0 before a successful launch; stays the same after the exit.
    pid_t processIdentifier() const;

    // Sends SIGTERM, unless the child is known to have ended.
    void terminate();

    // Blocks until the child has ended, and returns its status; -1 without a successful launch. Any
    // thread, several times.
    int wait();

    // All that is left in a pipe without a handler, to its end; blocks until every writer has
    // closed it. Empty for other streams, and the second time.
    QByteArray readToEnd(Output output);

private:
    struct State;
    std::shared_ptr<State> m_state;
};
