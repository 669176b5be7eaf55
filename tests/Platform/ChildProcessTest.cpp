#include "ChildProcess.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "Recorder.h"
#include "ShellChild.h"
#include "TestFolder.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using Output = ChildProcess::Output;
using Stream = ChildProcess::Stream;

bool exists(pid_t pid) {
    return kill(pid, 0) == 0;
}

TEST(ChildProcessTest, ArgumentsReachTheChildUnchanged) {
    const QStringList arguments = {QStringLiteral("a b"),
                                   QString(),
                                   QStringLiteral("$HOME `id` ; * ' \" \\"),
                                   QStringLiteral("-n"),
                                   QStringLiteral("ü€💿"),
                                   QStringLiteral("line\nbreak"),
                                   QStringLiteral(" \t ends\n "),
                                   QStringLiteral("  ")};
    auto child =
        shell(QStringLiteral("printf '%s|' \"$@\""), QStringList{QStringLiteral("sh")} + arguments);
    EXPECT_EQ(outcome(child).output,
              (arguments.join(QLatin1Char('|')) + QLatin1Char('|')).toUtf8());
}

TEST(ChildProcessTest, OutputAndErrorAreKeptApart) {
    auto child = shell(QStringLiteral("echo out; echo err >&2; exit 3"));
    const Outcome result = outcome(child);
    EXPECT_EQ(result.output, "out\n");
    EXPECT_EQ(result.error, "err\n");
    EXPECT_EQ(result.status, 3);
}

TEST(ChildProcessTest, TheStatusIsTheExitStatus) {
    for (const int status : {0, 1, 2, 127, 128, 255}) {
        auto child = shell(QStringLiteral("exit %1").arg(status));
        EXPECT_EQ(outcome(child).status, status);
    }
}

TEST(ChildProcessTest, TheStatusOfAKilledChildIsTheSignalsNumber) {
    for (const int number : {SIGKILL, SIGTERM, SIGHUP, SIGSEGV}) {
        auto child = shell(QStringLiteral("ulimit -c 0; kill -%1 $$").arg(number));
        EXPECT_EQ(outcome(child).status, number);
    }
}

TEST(ChildProcessTest, AMissingExecutableFailsWithTheStandardText) {
    ChildProcess child(QStringLiteral("/nonexistent/tool"), {});
    child.setStream(Output::Standard, Stream::Pipe);
    EXPECT_EQ(child.launch(), u"No such file or directory");
    EXPECT_EQ(child.processIdentifier(), 0);
    EXPECT_EQ(child.wait(), -1);
    EXPECT_EQ(child.readToEnd(Output::Standard), "");
    child.terminate();
}

TEST(ChildProcessTest, AMissingInterpreterFailsWithTheStandardText) {
    TestFolder folder;
    const QString script = folder.write(QStringLiteral("tool"), "#!/nonexistent/interpreter\n");
    QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(ChildProcess(script, {}).launch(), u"No such file or directory");
}

TEST(ChildProcessTest, WhatIsNotExecutableFailsWithTheStandardText) {
    TestFolder folder;
    const QString plain = folder.write(QStringLiteral("plain"), "exit 0\n");
    EXPECT_EQ(ChildProcess(plain, {}).launch(), u"Permission denied");
    EXPECT_EQ(ChildProcess(folder.path(), {}).launch(), u"Permission denied");
    QFile::setPermissions(plain, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(ChildProcess(plain, {}).launch(), u"Exec format error");
}

TEST(ChildProcessTest, ANulInAnArgumentFailsInsteadOfCuttingIt) {
    const QString cut = QStringLiteral("a") + QChar(0) + QStringLiteral("b");
    EXPECT_EQ(ChildProcess(QStringLiteral("/bin/true"), {cut}).launch(), u"Invalid argument");
}

TEST(ChildProcessTest, NoHandlerIsCalledOrKeptAfterAFailedLaunch) {
    Recorder recorder;
    {
        ChildProcess child(QStringLiteral("/nonexistent/tool"), {});
        recorder.follow(child);
        EXPECT_TRUE(child.launch());
        EXPECT_EQ(recorder.users(), 1);
    }
    EXPECT_FALSE(recorder.hasExited());
}

TEST(ChildProcessTest, ChunksComeInOrderAndTheExitLast) {
    Recorder recorder;
    auto child = shell(QStringLiteral("seq 1 20000; echo end >&2; exit 7"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForExit(), 7);
    QByteArray expected;
    for (int i = 1; i <= 20000; ++i) {
        expected += QByteArray::number(i) + '\n';
    }
    EXPECT_EQ(recorder.output(), expected);
    EXPECT_EQ(recorder.error(), "end\n");
    EXPECT_THAT(recorder.chunkSizes(), Each(Ge(1)));
    EXPECT_EQ(recorder.chunksAfterExit(), 0);
}

TEST(ChildProcessTest, AChunkArrivesWhileTheChildRuns) {
    Recorder recorder;
    auto child = shell(QStringLiteral("echo early; exec sleep 1000"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForOutput("early\n"), "early\n");
    EXPECT_FALSE(recorder.hasExited());
    child.terminate();
    EXPECT_EQ(recorder.waitForExit(), SIGTERM);
}

TEST(ChildProcessTest, EndlessOutputEndsWithTheChild) {
    Recorder recorder;
    ChildProcess child(QStringLiteral("/usr/bin/yes"), {});
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    recorder.waitForOutput("y\ny\n");
    child.terminate();
    EXPECT_EQ(recorder.waitForExit(), SIGTERM);
    EXPECT_EQ(recorder.chunksAfterExit(), 0);
}

TEST(ChildProcessTest, GarbageArrivesByteForByte) {
    Recorder recorder;
    auto child = shell(QStringLiteral("printf '\\000\\377\\200\\n\\000'"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForExit(), 0);
    EXPECT_EQ(recorder.output(), QByteArray("\0\xFF\x80\n\0", 5));
}

TEST(ChildProcessTest, ASilentChildDeliversItsExitOnly) {
    Recorder recorder;
    auto child = shell(QStringLiteral("exit 5"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForExit(), 5);
    EXPECT_THAT(recorder.chunkSizes(), IsEmpty());
}

TEST(ChildProcessTest, AChildThatClosesItsOutputEarlyIsStillFollowedToItsEnd) {
    TestFolder folder;
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    Recorder recorder;
    auto child = shell(QStringLiteral("echo out; exec >&-; read line < '%1'; "
                                      "echo late >&2; exit 4")
                           .arg(fifo));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForOutput("out\n"), "out\n");
    EXPECT_FALSE(recorder.hasExited());
    EXPECT_TRUE(QFile(fifo).open(QIODevice::WriteOnly));
    EXPECT_EQ(recorder.waitForExit(), 4);
    EXPECT_EQ(recorder.error(), "late\n");
}

TEST(ChildProcessTest, AStreamThatTheChildHasClosedIsLetGo) {
    const QSet<QString> before = openPipes();
    Recorder recorder;
    auto child = shell(QStringLiteral("echo out; exec >&-; exec sleep 1000"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    recorder.waitForOutput("out\n");
    while ((openPipes() - before).size() > 1) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(recorder.hasExited());
    child.terminate();
    EXPECT_EQ(recorder.waitForExit(), SIGTERM);
}

TEST(ChildProcessTest, AGrandchildThatHoldsThePipesDelaysNothing) {
    TestFolder folder;
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    Recorder recorder;
    auto child = shell(QStringLiteral("echo before; (read line < '%1') & exit 6").arg(fifo));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForExit(), 6);
    EXPECT_EQ(recorder.output(), "before\n");
    // Only now may the grandchild end: opening waits for it to have come that far.
    EXPECT_TRUE(QFile(fifo).open(QIODevice::WriteOnly));
}

TEST(ChildProcessTest, AGrandchildThatNeverStopsPrintingDelaysNothing) {
    Recorder recorder;
    auto child = shell(QStringLiteral("yes & echo $! >&2; exit 6"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForExit(), 6);
    // It loses its reader and ends by that.
    const pid_t grandchild = recorder.error().trimmed().toInt();
    ASSERT_GT(grandchild, 0);
    const QString state = QStringLiteral("/proc/%1/stat").arg(grandchild);
    while (true) {
        const auto text = TestFolder::read(state);
        if (!text || text->isEmpty() || text->contains(") Z ")) {
            break;
        }
        std::this_thread::yield();
    }
    EXPECT_EQ(recorder.chunksAfterExit(), 0);
}

TEST(ChildProcessTest, ReadToEndWaitsForEveryWriter) {
    TestFolder folder;
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    auto child =
        shell(QStringLiteral("echo child; (read line < '%1'; echo grandchild) & exit 0").arg(fifo));
    child.setStream(Output::Standard, Stream::Pipe);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(child.wait(), 0);
    auto all = std::async(std::launch::async, [&] { return child.readToEnd(Output::Standard); });
    EXPECT_TRUE(QFile(fifo).open(QIODevice::WriteOnly));
    EXPECT_EQ(all.get(), "child\ngrandchild\n");
    EXPECT_EQ(child.readToEnd(Output::Standard), "");
}

TEST(ChildProcessTest, APipeThatWasReadToItsEndIsLetGo) {
    const QSet<QString> before = openPipes();
    auto child = shell(QStringLiteral("exit 0"));
    EXPECT_EQ(outcome(child).status, 0);
    EXPECT_EQ(openPipes(), before);
}

TEST(ChildProcessTest, ASignalWhileAPipeIsReadLosesNothing) {
    TestFolder folder;
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    struct sigaction before = {};
    struct sigaction counting = {};
    static std::atomic<int> handled = 0;
    handled = 0;
    counting.sa_handler = [](int) { ++handled; };  // without SA_RESTART
    sigaction(SIGUSR1, &counting, &before);
    auto child = shell(QStringLiteral("(read line < '%1'; echo late) & exit 0").arg(fifo));
    child.setStream(Output::Standard, Stream::Pipe);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(child.wait(), 0);
    std::promise<pid_t> reader;
    auto all = std::async(std::launch::async, [&] {
        reader.set_value(gettid());
        return child.readToEnd(Output::Standard);
    });
    const pid_t thread = reader.get_future().get();
    const QString state = QStringLiteral("/proc/self/task/%1/stat").arg(thread);
    while (!TestFolder::read(state).value_or(QByteArray()).contains(") S ")) {
        std::this_thread::yield();
    }
    tgkill(getpid(), thread, SIGUSR1);
    while (handled == 0) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(QFile(fifo).open(QIODevice::WriteOnly));
    EXPECT_EQ(all.get(), "late\n");
    sigaction(SIGUSR1, &before, nullptr);
}

TEST(ChildProcessTest, APipeWithAHandlerIsNotReadByAnybodyElse) {
    Recorder recorder;
    auto child = shell(QStringLiteral("echo out; exec sleep 1000"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(child.readToEnd(Output::Standard), "");
    EXPECT_EQ(recorder.waitForOutput("out\n"), "out\n");
    child.terminate();
    EXPECT_EQ(recorder.waitForExit(), SIGTERM);
}

TEST(ChildProcessTest, TheNullDeviceTakesWhatIsPrinted) {
    auto child = shell(QStringLiteral("readlink /proc/$$/fd/1 | cat >&2; echo lost"));
    child.setStream(Output::Standard, Stream::Null);
    child.setStream(Output::Error, Stream::Pipe);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(child.readToEnd(Output::Standard), "");
    EXPECT_EQ(child.readToEnd(Output::Error), "/dev/null\n");
}

TEST(ChildProcessTest, StreamsAreInheritedUnlessSet) {
    char own[4096] = {};
    ASSERT_GT(readlink("/proc/self/fd/2", own, sizeof own - 1), 0);
    auto child = shell(QStringLiteral("readlink /proc/$$/fd/2"));
    child.setStream(Output::Standard, Stream::Pipe);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(child.readToEnd(Output::Standard).trimmed(), own);
}

TEST(ChildProcessTest, WaitGivesTheStatusSeveralTimesAndFromSeveralThreads) {
    auto child = shell(QStringLiteral("exec sleep 1000"));
    ASSERT_EQ(child.launch(), std::nullopt);
    auto other = std::async(std::launch::async, [&] { return child.wait(); });
    child.terminate();
    EXPECT_EQ(child.wait(), SIGTERM);
    EXPECT_EQ(other.get(), SIGTERM);
    EXPECT_EQ(child.wait(), SIGTERM);
}

TEST(ChildProcessTest, TerminateIsPolite) {
    Recorder recorder;
    auto child =
        shell(QStringLiteral("trap 'echo bye; exit 9' TERM; echo ready; "
                             "while :; do sleep 0.01; done"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    recorder.waitForOutput("ready\n");
    child.terminate();
    EXPECT_EQ(recorder.waitForExit(), 9);
    EXPECT_EQ(recorder.output(), "ready\nbye\n");
}

TEST(ChildProcessTest, TerminateAfterTheExitSignalsNobody) {
    auto child = shell(QStringLiteral("exit 0"));
    ASSERT_EQ(child.launch(), std::nullopt);
    const pid_t pid = child.processIdentifier();
    EXPECT_EQ(child.wait(), 0);
    EXPECT_FALSE(exists(pid));
    child.terminate();
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(child.processIdentifier(), pid);
}

TEST(ChildProcessTest, TerminateBeforeTheLaunchDoesNothing) {
    auto child = shell(QStringLiteral("exit 3"));
    child.terminate();
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(child.wait(), 3);
}

TEST(ChildProcessTest, ADroppedChildLivesOnAndIsReaped) {
    TestFolder folder;
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    pid_t pid = 0;
    {
        auto child = shell(QStringLiteral("read line < '%1'; echo done > '%1.done'").arg(fifo));
        ASSERT_EQ(child.launch(), std::nullopt);
        pid = child.processIdentifier();
    }
    EXPECT_TRUE(exists(pid));
    EXPECT_TRUE(QFile(fifo).open(QIODevice::WriteOnly));
    while (exists(pid)) {
        std::this_thread::yield();
    }
    EXPECT_EQ(TestFolder::read(fifo + QStringLiteral(".done")), "done\n");
}

TEST(ChildProcessTest, TheHandlersOfADroppedChildAreStillCalledAndThenDropped) {
    TestFolder folder;
    const QString fifo = folder.path(QStringLiteral("fifo"));
    ASSERT_EQ(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    Recorder recorder;
    {
        auto child = shell(QStringLiteral("read line < '%1'; echo late; exit 2").arg(fifo));
        recorder.follow(child);
        ASSERT_EQ(child.launch(), std::nullopt);
    }
    EXPECT_TRUE(QFile(fifo).open(QIODevice::WriteOnly));
    EXPECT_EQ(recorder.waitForExit(), 2);
    EXPECT_EQ(recorder.output(), "late\n");
    while (recorder.users() > 1) {
        std::this_thread::yield();
    }
}

TEST(ChildProcessTest, TheHandlersOfAKeptChildAreDroppedAfterItsExit) {
    Recorder recorder;
    auto child = shell(QStringLiteral("exit 2"));
    recorder.follow(child);
    ASSERT_EQ(child.launch(), std::nullopt);
    EXPECT_EQ(recorder.waitForExit(), 2);
    while (recorder.users() > 1) {
        std::this_thread::yield();
    }
    EXPECT_EQ(child.wait(), 2);
}

TEST(ChildProcessTest, AThousandQuickChildrenLeaveNothingBehind) {
    const auto descriptors = [] {
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries).size();
    };
    const auto before = descriptors();
    for (int i = 0; i < 1000; ++i) {
        Recorder recorder;
        ChildProcess child(QStringLiteral("/bin/echo"), {QString::number(i)});
        recorder.follow(child);
        ASSERT_EQ(child.launch(), std::nullopt);
        ASSERT_EQ(recorder.waitForExit(), 0);
        ASSERT_EQ(recorder.output(), QByteArray::number(i) + '\n');
    }
    for (int i = 0; i < 50; ++i) {
        ChildProcess missing(QStringLiteral("/nonexistent/tool"), {});
        missing.setStream(Output::Standard, Stream::Pipe);
        EXPECT_TRUE(missing.launch());
    }
    while (descriptors() > before) {
        std::this_thread::yield();
    }
    siginfo_t info = {};
    EXPECT_EQ(waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(ChildProcessTest, ManyChildrenAtOnceKeepTheirOwnOutput) {
    constexpr int count = 100;
    std::vector<std::unique_ptr<ChildProcess>> children;
    std::vector<Recorder> recorders(count);
    for (int i = 0; i < count; ++i) {
        children.push_back(std::make_unique<ChildProcess>(
            QStringLiteral("/bin/sh"),
            QStringList{QStringLiteral("-c"), QStringLiteral("echo %1; exit %1").arg(i)}));
        recorders[static_cast<size_t>(i)].follow(*children.back());
        ASSERT_EQ(children.back()->launch(), std::nullopt);
    }
    for (int i = 0; i < count; ++i) {
        Recorder& recorder = recorders[static_cast<size_t>(i)];
        EXPECT_EQ(recorder.waitForExit(), i);
        EXPECT_EQ(recorder.output(), QByteArray::number(i) + '\n');
    }
}

}  // namespace
