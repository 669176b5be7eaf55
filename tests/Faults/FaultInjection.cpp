// Preloaded by the tests: makes a call of the C library in one program fail, lie, pause or kill.
//
// FAULT_RULE says "<programs> <functions> <piece of the path> <which call> <what happens>", such as
// "hdiutil write .cdr 2 ENOSPC". "-" stands for any path, "any" for every function, "rename,link"
// for both, "2+" for the second call and all later ones. FAULT_STATE is the file of the FaultState.
// What happens:
//   an error's name  the call fails with it
//   SHORT, GARBAGE   a write takes only half of its bytes, or writes others
//   PAUSE            the call waits until the test lets it go on
//   a signal's name  the process ends by it, within the call
//   TERM>self        the signal is sent, here or to the "group" or the "parent", and the call goes
//   on BACK             the clock is set back by a day
// The library itself calls nothing that it replaces.
#undef _FILE_OFFSET_BITS  // with it, open() and open64() would be one function

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "FaultState.h"

namespace {

struct Named {
    const char* name;
    int number;
};

constexpr std::array errorNames = {
    Named{"EACCES", EACCES}, Named{"EAGAIN", EAGAIN}, Named{"EDQUOT", EDQUOT},
    Named{"EEXIST", EEXIST}, Named{"EINTR", EINTR},   Named{"EINVAL", EINVAL},
    Named{"EIO", EIO},       Named{"EMFILE", EMFILE}, Named{"ENOENT", ENOENT},
    Named{"ENOMEM", ENOMEM}, Named{"ENOSPC", ENOSPC}, Named{"EROFS", EROFS},
    Named{"EXDEV", EXDEV},
};
constexpr std::array signalNames = {Named{"TERM", SIGTERM}, Named{"INT", SIGINT},
                                    Named{"HUP", SIGHUP}, Named{"KILL", SIGKILL},
                                    Named{"SEGV", SIGSEGV}};

template <std::size_t size>
int numberOf(const std::array<Named, size>& names, const char* name) {
    const auto* const found = std::find_if(names.begin(), names.end(), [name](const Named& named) {
        return strcmp(named.name, name) == 0;
    });
    return found == names.end() ? 0 : found->number;
}

struct Rule {
    bool isHere = false;  // in the program that the rule names
    const char* function = "";
    const char* path = "";  // empty: any
    unsigned call = 0;
    bool andLater = false;
    const char* what = "";
    int error = 0;
    int signal = 0;
    const char* target = nullptr;  // of the signal; null: this process, and the call never returns
};

Rule rule;
FaultState* state = nullptr;

// "word rest" becomes two texts; the first is given back.
const char* nextWord(char** text) {
    char* const word = *text;
    char* const end = strchr(word, ' ');
    if (end != nullptr) {
        *end = '\0';
    }
    *text = end != nullptr ? end + 1 : word + strlen(word);
    return word;
}

// Whether a list such as "rename,link" has the name.
bool has(const char* list, const char* name) {
    const size_t length = strlen(name);
    const char* found = strstr(list, name);
    while (found != nullptr && ((found != list && found[-1] != ',') ||
                                (found[length] != '\0' && found[length] != ','))) {
        found = strstr(found + 1, name);
    }
    return found != nullptr;
}

FaultState* mappedState() {
    const char* const path = getenv("FAULT_STATE");
    const long file =
        path == nullptr ? -1 : syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    const long address =
        syscall(SYS_mmap, nullptr, sizeof(FaultState), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    syscall(SYS_close, file);
    return address > 0 ? reinterpret_cast<FaultState*>(address) : nullptr;
}

__attribute__((constructor)) void readRule() {
    const char* const given = getenv("FAULT_RULE");
    static std::array<char, 256> text;
    if (given == nullptr || strlen(given) >= text.size()) {
        return;
    }
    strcpy(text.data(), given);
    char* rest = text.data();
    if (!has(nextWord(&rest), program_invocation_short_name)) {
        return;
    }
    rule.function = nextWord(&rest);
    const char* const path = nextWord(&rest);
    rule.path = strcmp(path, "-") == 0 ? "" : path;
    const char* const call = nextWord(&rest);
    rule.call = static_cast<unsigned>(atoi(call));
    rule.andLater = strchr(call, '+') != nullptr;
    char* what = rest;
    if (char* const to = strchr(what, '>')) {
        *to = '\0';
        rule.target = to + 1;
    }
    rule.what = what;
    rule.error = numberOf(errorNames, what);
    rule.signal = numberOf(signalNames, what);
    state = mappedState();
    rule.isHere = state != nullptr;
}

bool happens(const char* what) {
    return strcmp(rule.what, what) == 0;
}

bool isIt(const char* function, const char* path) {
    if (!rule.isHere || (!has(rule.function, function) && !has(rule.function, "any")) ||
        (rule.path[0] != '\0' && (path == nullptr || strstr(path, rule.path) == nullptr))) {
        return false;
    }
    const unsigned call = state->calls.fetch_add(1) + 1;
    if (call < rule.call || (call > rule.call && !rule.andLater)) {
        return false;
    }
    state->faults.fetch_add(1);
    return true;
}

void sendSignal() {
    pid_t to = getpid();
    if (rule.target != nullptr && strcmp(rule.target, "group") == 0) {
        to = 0;
    } else if (rule.target != nullptr && strcmp(rule.target, "parent") == 0) {
        to = getppid();
    }
    kill(to, rule.signal);
    while (rule.target == nullptr) {
        pause();
    }
}

enum class Then { GoesOn, Fails, TakesHalf, Lies };

Then meet(const char* function, const char* path) {
    const int before = errno;
    if (!isIt(function, path)) {
        errno = before;
        return Then::GoesOn;
    }
    if (rule.error != 0) {
        errno = rule.error;
        return Then::Fails;
    }
    if (rule.signal != 0) {
        sendSignal();
    }
    while (happens("PAUSE") && state->released.load() == 0) {
        syscall(SYS_futex, &state->released, FUTEX_WAIT, 0, nullptr, nullptr, 0);
    }
    errno = before;
    return happens("SHORT") ? Then::TakesHalf : happens("GARBAGE") ? Then::Lies : Then::GoesOn;
}

bool fails(const char* function, const char* path) {
    return meet(function, path) == Then::Fails;
}

Then meet(const char* function, int descriptor) {
    if (!rule.isHere) {
        return Then::GoesOn;
    }
    const int before = errno;
    std::array<char, 64> link{};
    std::array<char, 4096> path{};
    snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    const long length =
        syscall(SYS_readlinkat, AT_FDCWD, link.data(), path.data(), path.size() - 1);
    errno = before;
    return meet(function, length > 0 ? path.data() : nullptr);
}

bool fails(const char* function, int descriptor) {
    return meet(function, descriptor) == Then::Fails;
}

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

using Write = ssize_t(int, const void*, size_t);
using WriteAt = ssize_t(int, const void*, size_t, off_t);

// Calls the real function with what the rule leaves of the bytes.
template <typename Real>
ssize_t written(int descriptor, const void* bytes, size_t size, Real real) {
    static std::array<char, 4096> garbage;
    switch (meet("write", descriptor)) {
        case Then::Fails:
            return -1;
        case Then::TakesHalf:
            return real(bytes, size > 1 ? size / 2 : size);
        case Then::Lies:
            memset(garbage.data(), 0xff, garbage.size());
            return real(garbage.data(), std::min(size, garbage.size()));
        case Then::GoesOn:
            break;
    }
    return real(bytes, size);
}

constexpr time_t aDay = 24L * 60 * 60;

// The seconds by which the clock is wrong now.
time_t clockError() {
    if (!rule.isHere || !happens("BACK") || strcmp(rule.function, "clock") != 0) {
        return 0;
    }
    return isIt("clock", nullptr) ? aDay : 0;
}

mode_t modeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

#define OPEN(name)                                                                        \
    int name(const char* path, int flags, ...) {                                          \
        va_list arguments;                                                                \
        va_start(arguments, flags);                                                       \
        const mode_t mode = modeOf(flags, arguments);                                     \
        va_end(arguments);                                                                \
        return fails("open", path) ? -1 : next<decltype(open)>(#name)(path, flags, mode); \
    }
OPEN(open)
OPEN(open64)

#define OPENAT(name)                                                                           \
    int name(int folder, const char* path, int flags, ...) {                                   \
        va_list arguments;                                                                     \
        va_start(arguments, flags);                                                            \
        const mode_t mode = modeOf(flags, arguments);                                          \
        va_end(arguments);                                                                     \
        return fails("open", path) ? -1                                                        \
                                   : next<decltype(openat)>(#name)(folder, path, flags, mode); \
    }
OPENAT(openat)
OPENAT(openat64)

#define FOPEN(name)                                                                            \
    FILE* name(const char* path, const char* mode) {                                           \
        return fails("open", path) ? nullptr                                                   \
                                   : next<FILE*(const char*, const char*)>(#name)(path, mode); \
    }
FOPEN(fopen)
FOPEN(fopen64)

#define MKOSTEMP(name)                                                               \
    int name(char* path, int flags) {                                                \
        return fails("open", path) ? -1 : next<int(char*, int)>(#name)(path, flags); \
    }
MKOSTEMP(mkostemp)
MKOSTEMP(mkostemp64)

ssize_t read(int descriptor, void* bytes, size_t size) {
    return fails("read", descriptor)
               ? -1
               : next<ssize_t(int, void*, size_t)>("read")(descriptor, bytes, size);
}

#define PREAD(name)                                                                         \
    ssize_t name(int descriptor, void* bytes, size_t size, off_t offset) {                  \
        return fails("read", descriptor) ? -1                                               \
                                         : next<ssize_t(int, void*, size_t, off_t)>(#name)( \
                                               descriptor, bytes, size, offset);            \
    }
PREAD(pread)
PREAD(pread64)

ssize_t write(int descriptor, const void* bytes, size_t size) {
    return written(descriptor, bytes, size, [descriptor](const void* taken, size_t count) {
        return next<Write>("write")(descriptor, taken, count);
    });
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
    const ssize_t taken =
        written(fileno(stream), bytes, size * count, [stream](const void* rest, size_t length) {
            return static_cast<ssize_t>(next<size_t(const void*, size_t, size_t, FILE*)>("fwrite")(
                rest, 1, length, stream));
        });
    return taken < 0 || size == 0 ? 0 : static_cast<size_t>(taken) / size;
}

#define PWRITE(name)                                                                      \
    ssize_t name(int descriptor, const void* bytes, size_t size, off_t offset) {          \
        return written(descriptor, bytes, size,                                           \
                       [descriptor, offset](const void* taken, size_t count) {            \
                           return next<WriteAt>(#name)(descriptor, taken, count, offset); \
                       });                                                                \
    }
PWRITE(pwrite)
PWRITE(pwrite64)

int rename(const char* from, const char* to) noexcept {
    return fails("rename", to) ? -1 : next<int(const char*, const char*)>("rename")(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
    return fails("rename", to) ? -1
                               : next<int(int, const char*, int, const char*, unsigned)>(
                                     "renameat2")(fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) noexcept {
    return fails("link", to) ? -1 : next<int(const char*, const char*)>("link")(from, to);
}

int unlink(const char* path) noexcept {
    return fails("unlink", path) ? -1 : next<int(const char*)>("unlink")(path);
}

int mkdir(const char* path, mode_t mode) noexcept {
    return fails("mkdir", path) ? -1 : next<int(const char*, mode_t)>("mkdir")(path, mode);
}

int fsync(int descriptor) {
    return fails("sync", descriptor) ? -1 : next<int(int)>("fsync")(descriptor);
}

int fdatasync(int descriptor) {
    return fails("sync", descriptor) ? -1 : next<int(int)>("fdatasync")(descriptor);
}

int flock(int descriptor, int operation) noexcept {
    return fails("flock", descriptor) ? -1 : next<int(int, int)>("flock")(descriptor, operation);
}

#define FTRUNCATE(name)                                                                         \
    int name(int descriptor, off_t size) noexcept {                                             \
        return fails("ftruncate", descriptor) ? -1                                              \
                                              : next<int(int, off_t)>(#name)(descriptor, size); \
    }
FTRUNCATE(ftruncate)
FTRUNCATE(ftruncate64)

#define FALLOCATE(name)                                                                        \
    int name(int descriptor, int mode, off_t offset, off_t size) {                             \
        return fails("fallocate", descriptor)                                                  \
                   ? -1                                                                        \
                   : next<int(int, int, off_t, off_t)>(#name)(descriptor, mode, offset, size); \
    }
FALLOCATE(fallocate)
FALLOCATE(fallocate64)

#define LSEEK(name)                                                                   \
    off_t name(int descriptor, off_t offset, int whence) noexcept {                   \
        return fails("lseek", descriptor)                                             \
                   ? -1                                                               \
                   : next<off_t(int, off_t, int)>(#name)(descriptor, offset, whence); \
    }
LSEEK(lseek)
LSEEK(lseek64)

#define MMAP(name)                                                                    \
    void* name(void* address, size_t size, int protection, int flags, int descriptor, \
               off_t offset) noexcept {                                               \
        return fails("mmap", descriptor)                                              \
                   ? MAP_FAILED                                                       \
                   : next<void*(void*, size_t, int, int, int, off_t)>(#name)(         \
                         address, size, protection, flags, descriptor, offset);       \
    }
MMAP(mmap)
MMAP(mmap64)

#define STATVFS(name, Status)                                                     \
    int name(const char* path, struct Status* status) noexcept {                  \
        return fails("statvfs", path)                                             \
                   ? -1                                                           \
                   : next<int(const char*, struct Status*)>(#name)(path, status); \
    }
#define FSTATVFS(name, Status)                                                  \
    int name(int descriptor, struct Status* status) noexcept {                  \
        return fails("statvfs", descriptor)                                     \
                   ? -1                                                         \
                   : next<int(int, struct Status*)>(#name)(descriptor, status); \
    }
STATVFS(statvfs, statvfs)
STATVFS(statvfs64, statvfs64)
STATVFS(statfs, statfs)
STATVFS(statfs64, statfs64)
FSTATVFS(fstatvfs, statvfs)
FSTATVFS(fstatvfs64, statvfs64)

int pipe2(int ends[2], int flags) noexcept {
    return fails("pipe", nullptr) ? -1 : next<int(int*, int)>("pipe2")(ends, flags);
}

int socket(int domain, int type, int protocol) noexcept {
    return fails("socket", nullptr) ? -1
                                    : next<int(int, int, int)>("socket")(domain, type, protocol);
}

// These two give their errors back.

int posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const arguments[],
                char* const environment[]) {
    return fails("spawn", path) ? errno
                                : next<decltype(posix_spawn)>("posix_spawn")(
                                      child, path, actions, attributes, arguments, environment);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*work)(void*),
                   void* argument) noexcept {
    return fails("thread", nullptr) ? errno
                                    : next<decltype(pthread_create)>("pthread_create")(
                                          thread, attributes, work, argument);
}

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    const int result = next<int(clockid_t, timespec*)>("clock_gettime")(clock, now);
    if (result == 0 && clock == CLOCK_REALTIME) {
        now->tv_sec -= clockError();
    }
    return result;
}

int gettimeofday(timeval* now, void* zone) noexcept {
    const int result = next<int(timeval*, void*)>("gettimeofday")(now, zone);
    if (result == 0) {
        now->tv_sec -= clockError();
    }
    return result;
}

time_t time(time_t* now) noexcept {
    const time_t result = next<time_t(time_t*)>("time")(nullptr) - clockError();
    if (now != nullptr) {
        *now = result;
    }
    return result;
}

}  // extern "C"
