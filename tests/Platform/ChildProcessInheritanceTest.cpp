// What a child inherits, and what happens when there is nothing left to give it.
#include "ChildProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QDir>
#include <QSet>
#include <csignal>
#include <future>
#include <optional>
#include <thread>
#include <vector>

#include "ShellChild.h"
#include "Waiting.h"

namespace {

using Output = ChildProcess::Output;
using Stream = ChildProcess::Stream;

TEST(ChildProcessInheritanceTest, AChildHoldsNoDescriptorOfAnother) {
    const QSet<QString> before = openPipes();
    auto first = shell(QStringLiteral("exec sleep 1000"));
    first.setStream(Output::Standard, Stream::Pipe);
    first.setStream(Output::Error, Stream::Pipe);
    ASSERT_EQ(first.launch(), std::nullopt);
    const QSet<QString> firstPipes = openPipes() - before;
    EXPECT_EQ(firstPipes.size(), 2);
    ChildProcess second(QStringLiteral("/bin/ls"),
                        {QStringLiteral("-l"), QStringLiteral("/proc/self/fd")});
    const QByteArray listing = outcome(second).output;
    EXPECT_TRUE(listing.contains("pipe:"));
    for (const QString& pipe : firstPipes) {
        EXPECT_FALSE(listing.contains(pipe.toUtf8())) << pipe.toStdString();
    }
    first.terminate();
    first.wait();
}

TEST(ChildProcessInheritanceTest, VariablesOfTheChildsOwnTakeThePlaceOfInheritedOnes) {
    qputenv("SPINDRIFT_TEST_ONE", "inherited");
    qputenv("SPINDRIFT_TEST_ONE_MORE", "inherited");
    auto child = shell(QStringLiteral("env | grep ^SPINDRIFT_TEST | sort"));
    child.setVariables(
        {QStringLiteral("SPINDRIFT_TEST_ONE=a=b c"), QStringLiteral("SPINDRIFT_TEST_TWO=ü")});
    EXPECT_EQ(outcome(child).output,
              "SPINDRIFT_TEST_ONE=a=b c\nSPINDRIFT_TEST_ONE_MORE=inherited\n"
              "SPINDRIFT_TEST_TWO=ü\n");
    EXPECT_EQ(qgetenv("SPINDRIFT_TEST_ONE"), "inherited");
    qunsetenv("SPINDRIFT_TEST_ONE");
    qunsetenv("SPINDRIFT_TEST_ONE_MORE");
}

// Bits of the signals in a line of /proc/<pid>/status.
quint64 signalMask(const QByteArray& status, const QByteArray& name) {
    const qsizetype start = status.indexOf(name) + name.size();
    return status.mid(start, status.indexOf('\n', start) - start)
        .trimmed()
        .toULongLong(nullptr, 16);
}

quint64 bitOf(int signalNumber) {
    return quint64(1) << (signalNumber - 1);
}

TEST(ChildProcessInheritanceTest, SignalsAreNeitherBlockedNorIgnoredInTheChild) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigset_t mask;
    sigfillset(&blocked);
    pthread_sigmask(SIG_SETMASK, &blocked, &mask);
    ChildProcess child(QStringLiteral("/bin/cat"), {QStringLiteral("/proc/self/status")});
    const QByteArray status = outcome(child).output;
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    std::signal(SIGPIPE, before);
    EXPECT_EQ(signalMask(status, "SigBlk:"), 0U);
    EXPECT_EQ(signalMask(status, "SigIgn:") & bitOf(SIGPIPE), 0U);
}

TEST(ChildProcessInheritanceTest, WhatNohupOrAShellInTheBackgroundIgnoresStaysIgnored) {
    for (const int number : {SIGHUP, SIGINT, SIGQUIT}) {
        const auto before = std::signal(number, SIG_IGN);
        ChildProcess child(QStringLiteral("/bin/cat"), {QStringLiteral("/proc/self/status")});
        const QByteArray status = outcome(child).output;
        std::signal(number, before);
        EXPECT_EQ(signalMask(status, "SigIgn:") & bitOf(number), bitOf(number)) << number;
    }
}

TEST(ChildProcessInheritanceTest, AnIgnoredChildSignalCostsNoStatus) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    auto child = shell(QStringLiteral("exit 3"));
    EXPECT_EQ(outcome(child).status, 3);
    std::signal(SIGCHLD, before);
}

TEST(ChildProcessInheritanceTest, TheBackgroundThreadTakesNoSignals) {
    std::promise<quint64> mask;
    auto child = shell(QStringLiteral("exit 0"));
    child.setExitHandler([&](int) {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        mask.set_value((sigismember(&blocked, SIGINT) == 1 ? bitOf(SIGINT) : 0) |
                       (sigismember(&blocked, SIGTERM) == 1 ? bitOf(SIGTERM) : 0));
    });
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(mask.get_future().get(), bitOf(SIGINT) | bitOf(SIGTERM));
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGINT), 0);
}

// Closes some of the three standard descriptors for as long as it lives.
class WithoutDescriptors final {
public:
    explicit WithoutDescriptors(std::vector<int> numbers) : m_numbers(std::move(numbers)) {
        for (const int number : m_numbers) {
            m_copies.push_back(fcntl(number, F_DUPFD_CLOEXEC, 100));
            close(number);
        }
    }
    ~WithoutDescriptors() {
        for (size_t i = 0; i < m_numbers.size(); ++i) {
            dup2(m_copies[i], m_numbers[i]);
            close(m_copies[i]);
        }
    }

private:
    std::vector<int> m_numbers;
    std::vector<int> m_copies;
};

TEST(ChildProcessInheritanceTest, AProgramWithoutStandardDescriptorsCanStillRunTools) {
    for (const std::vector<int>& closed :
         {std::vector<int>{0}, {1}, {2}, {0, 1}, {1, 2}, {0, 2}, {0, 1, 2}}) {
        Outcome result;
        bool freed = true;
        {
            const WithoutDescriptors without(closed);
            auto child = shell(QStringLiteral("echo out; echo err >&2; exit 4"));
            result = outcome(child);
            for (const int number : closed) {
                freed = freed && fcntl(number, F_GETFD) < 0;
            }
        }
        EXPECT_TRUE(freed);
        EXPECT_EQ(result.output, "out\n");
        EXPECT_EQ(result.error, "err\n");
        EXPECT_EQ(result.status, 4);
    }
}

TEST(ChildProcessInheritanceTest, AChildWithoutStandardDescriptorsGetsTheNullDevice) {
    for (const int closed : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        QByteArray target;
        {
            const WithoutDescriptors without({closed});
            auto child =
                shell(QStringLiteral("target=$(readlink /proc/$$/fd/%1); echo \"$target\" %2")
                          .arg(closed)
                          .arg(closed == STDERR_FILENO ? QString() : QStringLiteral(">&2")));
            const auto piped = closed == STDERR_FILENO ? Output::Standard : Output::Error;
            child.setStream(piped, Stream::Pipe);
            child.launch();
            child.wait();
            target = child.readToEnd(piped);
        }
        EXPECT_EQ(target, "/dev/null\n") << closed;
    }
}

TEST(ChildProcessInheritanceTest, AProgramWithoutStandardDescriptorsHandsOnNoOthers) {
    const auto descriptorsOfAChild = [] {
        ChildProcess child(QStringLiteral("/bin/ls"), {QStringLiteral("/proc/self/fd")});
        return outcome(child).output.count('\n');
    };
    const auto usual = descriptorsOfAChild();
    qsizetype without = 0;
    {
        const WithoutDescriptors none({0, 1, 2});
        without = descriptorsOfAChild();
    }
    EXPECT_EQ(without, usual);
}

// While it lives no further descriptor can be had here; a child has enough of them.
class AllDescriptorsTaken final {
public:
    AllDescriptorsTaken() {
        // A sanitizer needs a descriptor for a type that it has not met before; the last one is
        // met when the thread that followed the child has gone.
        const auto threads = [] {
            return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::AllDirs).size();
        };
        const auto before = threads();
        auto first = shell(QStringLiteral("exit 0"));
        EXPECT_EQ(first.launch(), std::nullopt);
        EXPECT_EQ(first.wait(), 0);
        EXPECT_TRUE(waitUntil([&] { return threads() <= before; }));
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit few = m_before;
        few.rlim_cur = 64;
        setrlimit(RLIMIT_NOFILE, &few);
        int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
        while (descriptor >= 0) {
            m_taken.push_back(descriptor);
            descriptor = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        }
    }
    ~AllDescriptorsTaken() {
        for (const int descriptor : m_taken) {
            close(descriptor);
        }
        setrlimit(RLIMIT_NOFILE, &m_before);
    }
    AllDescriptorsTaken(const AllDescriptorsTaken&) = delete;
    AllDescriptorsTaken& operator=(const AllDescriptorsTaken&) = delete;

private:
    rlimit m_before = {};
    std::vector<int> m_taken;
};

TEST(ChildProcessInheritanceTest, RunningOutOfDescriptorsIsALaunchFailure) {
    auto child = shell(QStringLiteral("exit 0"));
    child.setStream(Output::Standard, Stream::Pipe);
    std::optional<QString> failure;
    {
        const AllDescriptorsTaken taken;
        failure = child.launch();
    }
    EXPECT_EQ(failure, u"Too many open files");
}

TEST(ChildProcessInheritanceTest, WithoutADescriptorToSpareForTheExitItIsStillNoticed) {
    // No pipes, so that the launch needs none; following the exit has to do without. The child
    // lives for a while, so that its exit is yet to come.
    auto child = shell(QStringLiteral("sleep 0.1; exit 3"));
    std::optional<QString> failure;
    int status = -1;
    {
        const AllDescriptorsTaken taken;
        failure = child.launch();
        status = child.wait();
    }
    EXPECT_EQ(failure, std::nullopt);
    EXPECT_EQ(status, 3);
}

}  // namespace
