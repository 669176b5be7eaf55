// How the built hdiutil ends before its image is complete: by signals, and with its parent.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "ImagingFixture.h"

using testing::IsEmpty;

namespace {

constexpr std::size_t mebibyte = 1024UL * 1024;
// The first read succeeds and the second never answers.
constexpr const char* hangingDrive =
    R"({"faults": [{"lba": 600, "kind": "hang", "seconds": 86400}]})";

class HdiutilEndTest : public ImagingFixture {
protected:
    std::uint64_t blockBytes() const {
        struct stat status {};
        stat(folder.path("image.cdr").c_str(), &status);
        return static_cast<std::uint64_t>(status.st_blocks) * 512;
    }
    // "hdiutil create -puppetstrings", started by a shell that it watches.
    std::unique_ptr<ToolRun> startUnderShell(ToolRun::Environment environment) const {
        environment.emplace_back("SPINDRIFT_PRACTICE_DRIVE", folder.path("drive"));
        const std::vector<std::string> arguments = {"-c",
                                                    "SPINDRIFT_WATCH_PID=$$ \"$0\" \"$@\" & wait",
                                                    ToolRun::tool("hdiutil"),
                                                    "create",
                                                    "-srcdevice",
                                                    "/dev/practice0",
                                                    "-format",
                                                    "UDTO",
                                                    "-puppetstrings",
                                                    "-o",
                                                    folder.path("image")};
        return std::make_unique<ToolRun>("/bin/sh", arguments, environment);
    }
    ToolRun::Result createWatching(pid_t process) const {
        return create("image", {}, {{"SPINDRIFT_WATCH_PID", std::to_string(process)}});
    }
};

TEST_F(HdiutilEndTest, TheSignalsThatEndItReleaseTheSpaceThatItReserved) {
    const std::string disc = insert(patternBytes(32 * mebibyte));
    drive(hangingDrive);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        auto run = start("image", {"-puppetstrings"}, {}, [number] {
            std::signal(number, SIG_DFL);  // which whoever runs the tests may have changed
        });
        ASSERT_TRUE(readUntilItCopies(*run));
        run->signal(number);
        EXPECT_EQ(run->wait().status, -number);
        const auto partial = image();
        ASSERT_TRUE(partial);
        EXPECT_EQ(partial->size(), mebibyte);
        EXPECT_TRUE(disc.starts_with(*partial));
        EXPECT_LT(blockBytes(), 2 * mebibyte);
        unlink(folder.path("image.cdr").c_str());
    }
}

TEST_F(HdiutilEndTest, ASignalThatIsIgnoredIsIgnoredOnSoThatNohupWorks) {
    const std::string disc = insert(patternBytes(4 * mebibyte));
    drive(R"({"bytesPerSecond": 4000000})");
    auto run = start("image", {"-puppetstrings"}, {}, [] { std::signal(SIGHUP, SIG_IGN); });
    ASSERT_TRUE(readUntilItCopies(*run));
    run->signal(SIGHUP);
    EXPECT_EQ(run->wait().status, 0);
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilEndTest, ItEndsWithTheProgramThatItIsToWatchThoughTheDriveDoesNotAnswer) {
    insert(patternBytes(4 * mebibyte));
    drive(hangingDrive);
    folder.write("other.cdr", "another image");
    const auto shell = startUnderShell({});
    ASSERT_TRUE(readUntilItCopies(*shell));
    ASSERT_TRUE(image());
    shell->signal(SIGKILL);
    // Both ends of its output are open until the tool has ended, too.
    shell->wait();
    EXPECT_THAT(images(), testing::ElementsAre("other.cdr"));
}

TEST_F(HdiutilEndTest, ItEndsWithTheProgramThatItIsToWatchThoughTheDiscDoesNotOpen) {
    insert(patternBytes(mebibyte));
    // Opening the log of the reads waits for somebody to read the log.
    ASSERT_EQ(mkfifo(folder.path("reads").c_str(), 0600), 0);
    const auto shell = startUnderShell(readLog());
    ASSERT_EQ(shell->readLine(), "PERCENT:-1");
    shell->signal(SIGKILL);
    shell->wait();
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilEndTest, OutputThatCannotBeWrittenIsAFailureThatSaysSo) {
    const std::string disc = insert(patternBytes(mebibyte));
    const auto result = create("image", {}, {}, [] {
        if (freopen("/dev/full", "w", stdout) == nullptr) {
            _exit(126);
        }
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "hdiutil: create failed - standard output: No space left on device\n");
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilEndTest, ItReadsForTheProgramThatStartedIt) {
    const std::string disc = insert(patternBytes(mebibyte));
    EXPECT_EQ(createWatching(getpid()).status, 0);
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilEndTest, ItDoesNotBeginForAProgramThatHasEnded) {
    insert(patternBytes(mebibyte));
    // A process that did not start it: as if the number of the one that did had been given anew.
    const auto result = createWatching(getppid());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "hdiutil: create failed - the program that started it has ended\n");
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilEndTest, AProcessThatCannotBeMeantHasEnded) {
    insert(patternBytes(mebibyte));
    for (const std::string value : {"nobody", "0", "-1"}) {
        EXPECT_EQ(create("image", {}, {{"SPINDRIFT_WATCH_PID", value}}).status, 1) << value;
    }
    EXPECT_THAT(images(), IsEmpty());
}

}  // namespace
