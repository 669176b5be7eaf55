#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <mutex>

#include "BackgroundThread.h"
#include "Descriptor.h"
#include "ErrorText.h"
#include "Spawn.h"

namespace {

constexpr size_t index(ChildProcess::Output output) {
    return output == ChildProcess::Output::Standard ? 0 : 1;
}

// At most one pipe's worth, the unit in which output is handed on. Empty at the end of the file, on
// an error, and when a non-blocking read finds nothing.
QByteArray readChunk(int descriptor, size_t limit = 64UL * 1024) {
    QByteArray chunk(static_cast<qsizetype>(limit), Qt::Uninitialized);
    ssize_t count = 0;
    do {
        count = ::read(descriptor, chunk.data(), limit);
    } while (count < 0 && errno == EINTR);
    chunk.truncate(count < 0 ? 0 : count);
    return chunk;
}

}  // namespace

struct ChildProcess::State {
    struct Channel {
        Stream stream = Stream::Inherited;
        ChunkHandler handler;
        bool isFollowed = false;  // read by the follower, not by readToEnd(); fixed at the launch
        Descriptor readEnd;

        bool isReadable() const { return isFollowed && readEnd.isOpen(); }
    };

    QString executable;
    QStringList arguments;
    QStringList variables;
    std::array<Channel, 2> channels;
    ExitHandler exitHandler;

    std::atomic<pid_t> pid = 0;
    enum class Stage { Prepared, Starting, Running, Failed, Ended };
    std::mutex mutex;  // guards what follows
    std::condition_variable changed;
    Stage stage = Stage::Prepared;
    int status = -1;

    void follow();
    void readUntilExit();
    bool hasExited() const;
    void reap();
    void drain(Channel& channel) const;
    void dropHandlers();
    void fail();
    void moveTo(Stage next);
};

// The follower's whole life: it may start before the child has, and is the only one to reap it.
void ChildProcess::State::follow() {
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return stage != Stage::Starting; });
        if (stage == Stage::Failed) {
            return;
        }
    }
    readUntilExit();
    reap();
    for (Channel& channel : channels) {
        drain(channel);
    }
    if (exitHandler) {
        exitHandler(status);
    }
    dropHandlers();
}

void ChildProcess::State::dropHandlers() {
    for (Channel& channel : channels) {
        channel.handler = nullptr;
    }
    exitHandler = nullptr;
}

void ChildProcess::State::fail() {
    dropHandlers();
    moveTo(Stage::Failed);
}

void ChildProcess::State::readUntilExit() {
    // Without it (an old kernel, a filter on system calls, no free descriptor) the exit is looked
    // for at short intervals instead.
    const Descriptor exit(static_cast<int>(syscall(SYS_pidfd_open, pid.load(), 0)));
    while (!hasExited()) {
        // poll() passes over negative descriptors.
        std::array<pollfd, 3> watched = {
            {{exit.number(), POLLIN, 0}, {-1, POLLIN, 0}, {-1, POLLIN, 0}}};
        for (size_t i = 0; i < channels.size(); ++i) {
            watched[i + 1].fd = channels[i].isReadable() ? channels[i].readEnd.number() : -1;
        }
        if (poll(watched.data(), watched.size(), exit.isOpen() ? -1 : 10) < 0) {
            continue;
        }
        for (size_t i = 0; i < channels.size(); ++i) {
            if (watched[i + 1].revents == 0) {
                continue;
            }
            const QByteArray chunk = readChunk(channels[i].readEnd.number());
            if (chunk.isEmpty()) {
                // The child has closed it and may yet live for long.
                channels[i].readEnd.close();
            } else {
                channels[i].handler(chunk);
            }
        }
    }
}

bool ChildProcess::State::hasExited() const {
    siginfo_t info = {};
    if (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0) {
        return errno != EINTR;
    }
    return info.si_pid != 0;
}

void ChildProcess::State::reap() {
    const std::lock_guard lock(mutex);
    int raw = 0;
    if (waitpid(pid, &raw, 0) == pid) {
        status = WIFSIGNALED(raw) ? WTERMSIG(raw) : WEXITSTATUS(raw);
    }
    stage = Stage::Ended;
    changed.notify_all();
}

// What is in the pipe now and no more: a grandchild may hold the other end, silent or never done.
void ChildProcess::State::drain(Channel& channel) const {
    if (!channel.isReadable()) {
        return;
    }
    int left = 0;
    if (ioctl(channel.readEnd.number(), FIONREAD, &left) != 0) {
        left = 0;
    }
    while (left > 0) {
        const QByteArray chunk = readChunk(channel.readEnd.number(), static_cast<size_t>(left));
        if (chunk.isEmpty()) {
            break;
        }
        left -= static_cast<int>(chunk.size());
        channel.handler(chunk);
    }
    channel.readEnd.close();
}

void ChildProcess::State::moveTo(Stage next) {
    const std::lock_guard lock(mutex);
    stage = next;
    changed.notify_all();
}

ChildProcess::ChildProcess(QString executable, QStringList arguments)
    : m_state(std::make_shared<State>()) {
    m_state->executable = std::move(executable);
    m_state->arguments = std::move(arguments);
}

ChildProcess::~ChildProcess() = default;

void ChildProcess::setStream(Output output, Stream stream) {
    m_state->channels[index(output)].stream = stream;
}

void ChildProcess::setVariables(QStringList variables) {
    m_state->variables = std::move(variables);
}

void ChildProcess::setChunkHandler(Output output, ChunkHandler handler) {
    m_state->channels[index(output)].handler = std::move(handler);
}

void ChildProcess::setExitHandler(ExitHandler handler) {
    m_state->exitHandler = std::move(handler);
}

std::optional<QString> ChildProcess::launch() {
    const std::shared_ptr<State> state = m_state;
    for (State::Channel& channel : state->channels) {
        channel.isFollowed = channel.handler && channel.stream == Stream::Pipe;
    }
    state->moveTo(State::Stage::Starting);
    // The thread comes first: a child is never there without somebody to reap it.
    const int error = BackgroundThread::start(
        BackgroundThread::Priority::Normal, [state] { state->follow(); },
        BackgroundThread::Life::Unawaited);
    if (error != 0) {
        state->fail();
        return errorText(error);
    }
    Spawn::Result spawned =
        Spawn::start(state->executable, state->arguments,
                     {state->channels[0].stream, state->channels[1].stream}, state->variables);
    if (spawned.error != 0) {
        state->fail();
        return errorText(spawned.error);
    }
    state->pid = spawned.pid;
    for (size_t i = 0; i < spawned.readEnds.size(); ++i) {
        state->channels[i].readEnd = std::move(spawned.readEnds[i]);
    }
    state->moveTo(State::Stage::Running);
    return std::nullopt;
}

pid_t ChildProcess::processIdentifier() const {
    return m_state->pid;
}

void ChildProcess::terminate() {
    // Under the lock that reaping takes: until it is reaped, the number is the child's.
    const std::lock_guard lock(m_state->mutex);
    if (m_state->stage == State::Stage::Running) {
        kill(m_state->pid, SIGTERM);
    }
}

int ChildProcess::wait() {
    std::unique_lock lock(m_state->mutex);
    m_state->changed.wait(lock, [this] {
        return m_state->stage != State::Stage::Starting && m_state->stage != State::Stage::Running;
    });
    return m_state->status;
}

QByteArray ChildProcess::readToEnd(Output output) {
    State::Channel& channel = m_state->channels[index(output)];
    QByteArray all;
    if (channel.isFollowed || !channel.readEnd.isOpen()) {
        return all;
    }
    while (true) {
        const QByteArray chunk = readChunk(channel.readEnd.number());
        if (chunk.isEmpty()) {
            break;
        }
        all += chunk;
    }
    channel.readEnd.close();
    return all;
}
