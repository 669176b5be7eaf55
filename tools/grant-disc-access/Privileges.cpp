#include "Privileges.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>

namespace {

// What changing a node's access list and the system's account files takes.
constexpr std::array<unsigned, 5> needed = {CAP_CHOWN, CAP_DAC_OVERRIDE, CAP_FOWNER, CAP_FSETID,
                                            CAP_AUDIT_WRITE};

bool isNeeded(unsigned capability) {
    return std::find(needed.begin(), needed.end(), capability) != needed.end();
}

Failure failed(const char* step) {
    return Failure::ofErrno(errno, step);
}

// A small limit of the caller's could cut the account files short, or end the account tool between
// two of them.
bool setLimits() {
    constexpr rlim_t enoughFiles = 1024;
    const rlimit unlimited = {RLIM_INFINITY, RLIM_INFINITY};
    const rlimit nothing = {0, 0};
    rlimit files = {};
    if (setrlimit(RLIMIT_FSIZE, &unlimited) != 0 || setrlimit(RLIMIT_CPU, &unlimited) != 0 ||
        setrlimit(RLIMIT_AS, &unlimited) != 0 || setrlimit(RLIMIT_DATA, &unlimited) != 0 ||
        setrlimit(RLIMIT_CORE, &nothing) != 0 || getrlimit(RLIMIT_NOFILE, &files) != 0) {
        return false;
    }
    files.rlim_cur = std::max(files.rlim_cur, enoughFiles);
    files.rlim_max = std::max(files.rlim_max, files.rlim_cur);
    return setrlimit(RLIMIT_NOFILE, &files) == 0;
}

}  // namespace

Result<void> Privileges::shedInheritance() {
    if (clearenv() != 0 || chdir("/") != 0) {
        return failed("cannot leave the caller's surroundings");
    }
    umask(S_IWGRP | S_IWOTH);
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // A closed one would be given to the next file that is opened.
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) != descriptor) {
            return failed("cannot open /dev/null");
        }
    }
    if (syscall(SYS_close_range, STDERR_FILENO + 1, UINT_MAX, 0) != 0) {
        return failed("cannot close the caller's files");
    }
    for (int number = 1; number < NSIG; ++number) {
        std::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    return setLimits() ? Result<void>() : failed("cannot set the limits");
}

Result<void> Privileges::keepOnlyNeeded() {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return failed("cannot give up new rights");
    }
    for (unsigned capability = 0; prctl(PR_CAPBSET_READ, capability, 0, 0, 0) >= 0; ++capability) {
        if (!isNeeded(capability) && prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0) {
            return failed("cannot give up a right");
        }
    }
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets = {};
    if (syscall(SYS_capget, &header, sets.data()) != 0) {
        return failed("cannot read the rights");
    }
    std::array<__u32, _LINUX_CAPABILITY_U32S_3> keep = {};
    for (const unsigned capability : needed) {
        keep[CAP_TO_INDEX(capability)] |= CAP_TO_MASK(capability);
    }
    for (std::size_t index = 0; index < sets.size(); ++index) {
        sets[index].permitted &= keep[index];
        sets[index].effective = sets[index].permitted;
        sets[index].inheritable = 0;
    }
    if (syscall(SYS_capset, &header, sets.data()) != 0) {
        return failed("cannot give up the other rights");
    }
    return {};
}

bool Privileges::isPlainRoot() {
    uid_t real = 1;
    uid_t effective = 1;
    uid_t saved = 1;
    return getresuid(&real, &effective, &saved) == 0 && real == 0 && effective == 0 && saved == 0;
}
