// The built shasum.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "CachedPages.h"
#include "DescriptorHolder.h"
#include "ScratchFolder.h"
#include "ToolRun.h"

namespace {

constexpr const char* emptyDigest =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
constexpr const char* abcDigest =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
// Of a million times the letter a.
constexpr const char* millionDigest =
    "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

class ShasumTest : public testing::Test {
protected:
    static ToolRun::Result shasum(const std::vector<std::string>& arguments,
                                  const std::function<void()>& prepare = {}) {
        return ToolRun::run(ToolRun::tool("shasum"), arguments, {}, prepare);
    }

    ScratchFolder folder;
};

TEST_F(ShasumTest, TheDigestIsFollowedByTwoBlanksAndTheFile) {
    const std::string path = folder.write("file", "abc");
    const auto result = shasum({"-a", "256", path});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, std::string(abcDigest) + "  " + path + "\n");
    EXPECT_EQ(result.err, "");
}

TEST_F(ShasumTest, KnownDigestsOfFilesOfSeveralSizes) {
    EXPECT_THAT(shasum({"-a", "256", folder.write("empty", "")}).out,
                testing::StartsWith(emptyDigest));
    EXPECT_THAT(shasum({"-a", "256", folder.write("million", std::string(1'000'000, 'a'))}).out,
                testing::StartsWith(millionDigest));
}

TEST_F(ShasumTest, EveryAlgorithmHasItsOwnDigest) {
    const std::string path = folder.write("file", "abc");
    const struct {
        const char* algorithm;
        const char* start;
    } cases[] = {{"1", "a9993e364706816aba3e25717850c26c9cd0d89d  "},
                 {"224", "23097d223405d8228642a477bda255b32aadbce4"},
                 {"256", abcDigest},
                 {"384", "cb00753f45a35e8bb5a03d699ac65007272c32ab"},
                 {"512", "ddaf35a193617abacc417349ae20413112e6fa4e"}};
    for (const auto& [algorithm, start] : cases) {
        EXPECT_THAT(shasum({"-a", algorithm, path}).out, testing::StartsWith(start));
        EXPECT_THAT(shasum({"--algorithm", algorithm, path}).out, testing::StartsWith(start));
    }
    EXPECT_THAT(shasum({path}).out, testing::StartsWith(cases[0].start));
}

TEST_F(ShasumTest, ItAgreesWithTheSystemsOwnToolOnBytesOfEverySort) {
    for (const std::size_t size :
         {2048UL, 4097UL, 1024UL * 1024UL - 1UL, 5UL * 1024UL * 1024UL + 3UL}) {
        const std::string path = folder.write("file", patternBytes(size));
        const auto ours = shasum({"-a", "256", path});
        const auto theirs = ToolRun::run("/usr/bin/sha256sum", {path});
        ASSERT_EQ(theirs.status, 0);
        EXPECT_EQ(ours.out, theirs.out);
    }
}

TEST_F(ShasumTest, OddFileNamesAreNotEscaped) {
    for (const std::string& name :
         {std::string("back\\slash"), std::string("new\nline"), std::string("carriage\rreturn"),
          std::string("\xff\xfe"), std::string("  blanks "), std::string("*")}) {
        const std::string path = folder.write(name, "abc");
        EXPECT_EQ(shasum({"-a", "256", path}).out, std::string(abcDigest) + "  " + path + "\n");
    }
}

TEST_F(ShasumTest, ANameThatLooksLikeAnOptionFollowsTwoDashes) {
    folder.write("-a", "abc");
    const auto result = shasum({"-a", "256", "--", "-a"}, [this] {
        if (chdir(folder.path().c_str()) != 0) {
            _exit(126);
        }
    });
    EXPECT_EQ(result.out, std::string(abcDigest) + "  -a\n");
}

TEST_F(ShasumTest, AMissingFileIsNamedAndTheOthersAreDigestedAllTheSame) {
    const std::string none = folder.path("none");
    const std::string path = folder.write("file", "abc");
    const auto result = shasum({"-a", "256", none, path});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "shasum: " + none + ": No such file or directory\n");
    EXPECT_EQ(result.out, std::string(abcDigest) + "  " + path + "\n");
}

TEST_F(ShasumTest, AFolderIsAnError) {
    const auto result = shasum({"-a", "256", folder.path()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "shasum: " + folder.path() + ": Is a directory\n");
    EXPECT_EQ(result.out, "");
}

TEST_F(ShasumTest, AFileThatMayNotBeReadIsAnError) {
    const std::string path = folder.write("file", "abc");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const auto result = shasum({"-a", "256", path}, [] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
            _exit(126);
        }
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "shasum: " + path + ": Permission denied\n");
}

TEST_F(ShasumTest, StandardInputIsADash) {
    const std::string path = folder.write("file", "abc");
    for (const auto& arguments :
         {std::vector<std::string>{"-a", "256"}, std::vector<std::string>{"-a", "256", "-"}}) {
        const auto result = shasum(arguments, [&path] {
            if (freopen(path.c_str(), "r", stdin) == nullptr) {
                _exit(126);
            }
        });
        EXPECT_EQ(result.out, std::string(abcDigest) + "  -\n");
    }
}

TEST_F(ShasumTest, WrongArgumentsAreAUsageError) {
    for (const auto& arguments :
         {std::vector<std::string>{"-x"}, std::vector<std::string>{"-a"},
          std::vector<std::string>{"-a", "257"}, std::vector<std::string>{"-a", "256x"},
          std::vector<std::string>{"-a", ""}, std::vector<std::string>{"--check", "file"}}) {
        const auto result = shasum(arguments);
        EXPECT_EQ(result.status, 64);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, testing::HasSubstr("Usage: shasum"));
    }
    EXPECT_EQ(shasum({"--help"}).status, 0);
}

TEST_F(ShasumTest, AFileThatMemoryHoldsIsReadFromItsDiskAllTheSame) {
    constexpr std::size_t size = 24UL * 1024 * 1024;
    const std::string path = folder.write("file", patternBytes(size));
    ASSERT_EQ(cachedBytes(path), size);
    const auto result = shasum({"-a", "256", path});
    ASSERT_EQ(result.status, 0);
    EXPECT_GE(result.diskBytes, size);
}

TEST_F(ShasumTest, ReadingAFileLeavesNothingOfItInMemory) {
    const std::string path = folder.write("file", patternBytes(24UL * 1024 * 1024));
    dropCache(path);
    ASSERT_EQ(shasum({"-a", "256", path}).status, 0);
    EXPECT_LE(cachedBytes(path).value_or(~std::size_t{0}), 1024UL * 1024);
}

TEST_F(ShasumTest, ItEndsWithTheProgramThatItIsToWatchThoughTheReadHangs) {
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ToolRun shell("/bin/sh", {"-c", "SPINDRIFT_WATCH_PID=$$ \"$0\" \"$@\" & wait",
                              ToolRun::tool("shasum"), "-a", "256", fifo});
    // Opened by both, and nothing is ever written to it.
    const DescriptorHolder writer(open(fifo.c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_TRUE(writer.isOpen());
    shell.signal(SIGKILL);
    EXPECT_EQ(shell.wait().out, "");
}

TEST_F(ShasumTest, ItDoesNotBeginForAProgramThatHasEnded) {
    const std::string path = folder.write("file", "abc");
    const auto digest = [&path](pid_t watched) {
        return ToolRun::run(ToolRun::tool("shasum"), {path},
                            {{"SPINDRIFT_WATCH_PID", std::to_string(watched)}});
    };
    EXPECT_EQ(digest(getpid()).status, 0);
    // A process that did not start it: as if the number of the one that did had been given anew.
    const auto result = digest(getppid());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "shasum: the program that started it has ended\n");
}

TEST_F(ShasumTest, OutputThatCannotBeWrittenIsAFailure) {
    const std::string path = folder.write("file", "abc");
    const auto result = shasum({"-a", "256", path}, [] {
        if (freopen("/dev/full", "w", stdout) == nullptr) {
            _exit(126);
        }
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, testing::HasSubstr("No space left on device"));
}

}  // namespace
