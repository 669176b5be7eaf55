#include "Spawn.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

namespace {

class FileActions final {
public:
    FileActions() { posix_spawn_file_actions_init(&m_actions); }
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    int openNull(int target) {
        const int mode = target == STDIN_FILENO ? O_RDONLY : O_WRONLY;
        return posix_spawn_file_actions_addopen(&m_actions, target, "/dev/null", mode, 0);
    }
    int duplicate(int source, int target) {
        return posix_spawn_file_actions_adddup2(&m_actions, source, target);
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions = {};
};

bool isIgnored(int signalNumber) {
    struct sigaction current = {};
    return sigaction(signalNumber, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

class Attributes final {
public:
    Attributes() {
        posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        // Ignored signals are inherited: without this a tool would not notice that its reader is
        // gone. What nohup or a shell's "&" has set is meant for the whole program, though.
        sigset_t reset;
        sigfillset(&reset);
        for (const int signalNumber : {SIGHUP, SIGINT, SIGQUIT}) {
            if (isIgnored(signalNumber)) {
                sigdelset(&reset, signalNumber);
            }
        }
        posix_spawnattr_setsigdefault(&m_attributes, &reset);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes = {};
};

// Away from 0, 1 and 2, which the kernel hands out when this program was started without them:
// anything that prints would print into the pipe.
int moveAboveStandard(Descriptor& descriptor) {
    if (descriptor.number() > STDERR_FILENO) {
        return 0;
    }
    Descriptor moved(fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!moved.isOpen()) {
        return errno;
    }
    descriptor = std::move(moved);
    return 0;
}

int makePipe(Descriptor& readEnd, Descriptor& writeEnd) {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    const int error = moveAboveStandard(readEnd);
    return error != 0 ? error : moveAboveStandard(writeEnd);
}

// An ignored SIGCHLD, which is inherited, would make the kernel throw away every exit status.
void keepExitStatuses() {
    if (isIgnored(SIGCHLD)) {
        std::signal(SIGCHLD, SIG_DFL);
    }
}

// Null-terminated pointers to the texts, as exec wants them; absent when a text holds a NUL, which
// no argument list can carry.
std::vector<char*> pointersTo(std::vector<QByteArray>& texts) {
    std::vector<char*> pointers;
    for (QByteArray& text : texts) {
        if (text.contains('\0')) {
            return {};
        }
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// The environment of this process, with these variables for its own of the same names.
std::vector<QByteArray> environmentWith(const QStringList& variables) {
    std::vector<QByteArray> all;
    for (const QString& variable : variables) {
        all.push_back(variable.toUtf8());
    }
    const std::vector<QByteArray> given = all;
    for (char** own = environ; own != nullptr && *own != nullptr; ++own) {
        const QByteArray text(*own);
        const QByteArray name = text.left(text.indexOf('=') + 1);
        if (std::none_of(given.begin(), given.end(),
                         [&name](const QByteArray& one) { return one.startsWith(name); })) {
            all.push_back(text);
        }
    }
    return all;
}

}  // namespace

Spawn::Result Spawn::start(const QString& executable, const QStringList& arguments,
                           const std::array<ChildProcess::Stream, 2>& streams,
                           const QStringList& variables) {
    Result result;
    FileActions actions;
    std::array<Descriptor, 2> writeEnds;
    for (const int target : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // A tool without these would open its files in their place and print its errors into them.
        if (fcntl(target, F_GETFD) < 0 && result.error == 0) {
            result.error = actions.openNull(target);
        }
    }
    for (size_t i = 0; i < streams.size() && result.error == 0; ++i) {
        const int target = static_cast<int>(i) + STDOUT_FILENO;
        if (streams[i] == ChildProcess::Stream::Null) {
            result.error = actions.openNull(target);
        } else if (streams[i] == ChildProcess::Stream::Pipe) {
            result.error = makePipe(result.readEnds[i], writeEnds[i]);
            if (result.error == 0) {
                result.error = actions.duplicate(writeEnds[i].number(), target);
            }
        }
    }
    std::vector<QByteArray> texts = {QFile::encodeName(executable)};
    for (const QString& argument : arguments) {
        texts.push_back(argument.toUtf8());
    }
    const std::vector<char*> pointers = pointersTo(texts);
    std::vector<QByteArray> environment = environmentWith(variables);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    if ((pointers.empty() || environmentPointers.empty()) && result.error == 0) {
        result.error = EINVAL;
    }
    if (result.error == 0) {
        keepExitStatuses();
        const Attributes attributes;
        result.error = posix_spawn(&result.pid, texts.front().constData(), actions.get(),
                                   attributes.get(), pointers.data(), environmentPointers.data());
    }
    if (result.error != 0) {
        result.pid = 0;
        result.readEnds = {};
    }
    return result;
}
