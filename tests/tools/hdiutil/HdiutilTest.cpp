// The built hdiutil over the practice drive.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ImagingFixture.h"
#include "Skipping.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr std::size_t sectorBytes = 2048;
constexpr std::size_t mebibyte = 1024UL * 1024;

class HdiutilTest : public ImagingFixture {};

TEST_F(HdiutilTest, TheImageIsTheDisc) {
    const std::string disc = insert(patternBytes(5 * mebibyte + 6 * sectorBytes));
    const auto result = create("image");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "created: " + folder.path("image.cdr") + "\n");
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilTest, DiscsOfOddSizesAreImagedToTheLastByte) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{2047}, std::size_t{2049},
                                   mebibyte - 1, mebibyte, mebibyte + 1, 2 * mebibyte + 12'345}) {
        const std::string disc = insert(patternBytes(size));
        const auto result = create("image");
        EXPECT_EQ(result.status, 0) << size << result.err;
        EXPECT_TRUE(image() == disc) << size;
        fs::remove(folder.path("image.cdr"));
    }
}

TEST_F(HdiutilTest, TheExtensionIsAddedUnlessItIsThere) {
    insert(patternBytes(4096));
    EXPECT_EQ(create("a.cdr").out, "created: " + folder.path("a.cdr") + "\n");
    EXPECT_EQ(create("b.iso").out, "created: " + folder.path("b.iso.cdr") + "\n");
    EXPECT_EQ(create("c.CDR").out, "created: " + folder.path("c.CDR.cdr") + "\n");
    EXPECT_THAT(images(), ElementsAre("a.cdr", "b.iso.cdr", "c.CDR.cdr"));
}

TEST_F(HdiutilTest, ThePathMayHoldAnyBytes) {
    const std::string disc = insert(patternBytes(4096));
    for (const std::string& name :
         {std::string("with blanks  and 'quotes\" $HOME *"), std::string("-o"),
          std::string("new\nline"), std::string("\xff\xfe not UTF-8"), std::string("äöü €")}) {
        const auto result = create(name);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, "created: " + folder.path(name) + ".cdr\n");
        EXPECT_TRUE(ScratchFolder::read(folder.path(name) + ".cdr") == disc);
    }
}

TEST_F(HdiutilTest, AnExistingFileIsRefusedAndLeftAlone) {
    insert(patternBytes(4096));
    folder.write("image.cdr", "precious");
    const auto result = create("image");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "hdiutil: create failed - " + folder.path("image.cdr") + ": File exists\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(image(), "precious");
}

TEST_F(HdiutilTest, AMissingFolderIsNamed) {
    insert(patternBytes(4096));
    const auto result = create("none/image");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "hdiutil: create failed - the folder " + folder.path("none") + " does not exist\n");
}

TEST_F(HdiutilTest, AFullDiskFailsAtOnceAndLeavesNothing) {
    insert({});
    // More than any disk of the machine that runs the tests has, and no byte of it is there.
    std::error_code problem;
    fs::resize_file(folder.path("drive/disc.iso"), std::uint64_t{8} << 40, problem);
    if (problem) {
        SKIP_BECAUSE("this file system has no sparse files that large");
    }
    const auto result = create("image");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, testing::ContainsRegex("No space left on device|File too large"));
    EXPECT_THAT(result.err, HasSubstr("the image needs 8796093022208 bytes"));
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, ProgressBeginsUnknownRisesAndEndsWithTheFileName) {
    insert(patternBytes(6 * mebibyte));
    drive(R"({"bytesPerSecond": 12000000})");
    const auto result = create("image", {"-puppetstrings"});
    ASSERT_EQ(result.status, 0) << result.err;
    auto lines = linesOf(result.out);
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines.front(), "PERCENT:-1");
    EXPECT_EQ(lines.back(), "created: " + folder.path("image.cdr"));
    EXPECT_EQ(lines[lines.size() - 2], "PERCENT:100.000000");
    double last = -1;
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        ASSERT_THAT(lines[i], StartsWith("PERCENT:"));
        const double percent = std::stod(lines[i].substr(8));
        EXPECT_GT(percent, last);
        last = percent;
    }
}

TEST_F(HdiutilTest, ThereAreAtMostTenProgressLinesASecond) {
    // About a mebibyte a read: fast enough for twice as many lines.
    insert(patternBytes(30 * mebibyte));
    drive(R"({"bytesPerSecond": 20000000})");
    const auto began = std::chrono::steady_clock::now();
    const auto result = create("image", {"-puppetstrings"});
    // Measured around the program, so a slow machine only allows more.
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_LE(linesOf(result.out).size() - 1, 10 * took.count() + 1);
}

TEST_F(HdiutilTest, OnASlowDriveTheReadsShrinkSoThatTheImageGrowsSteadily) {
    const std::string disc = insert(patternBytes(3 * mebibyte));
    drive(R"({"bytesPerSecond": 2000000})");
    ASSERT_EQ(create("image", {}, readLog()).status, 0);
    EXPECT_TRUE(image() == disc);
    std::vector<std::size_t> counts;
    for (const auto& line : reads()) {
        std::istringstream numbers(line);
        std::size_t first = 0;
        numbers >> first >> counts.emplace_back();
    }
    ASSERT_GT(counts.size(), 3U);
    EXPECT_EQ(counts.front(), 512U);
    counts.pop_back();  // whatever is left
    // Two of the pieces take a quarter of a second at least, whatever the machine.
    EXPECT_LE(*std::min_element(counts.begin(), counts.end()), 128U);
    EXPECT_GE(*std::min_element(counts.begin(), counts.end()), 64U);
}

TEST_F(HdiutilTest, WithoutTheOptionThereAreNoProgressLines) {
    insert(patternBytes(4096));
    EXPECT_EQ(linesOf(create("image").out).size(), 1U);
}

TEST_F(HdiutilTest, AnUnreadableSectorIsNamedAndWhatCameBeforeItStays) {
    const std::string disc = insert(patternBytes(4 * mebibyte));
    drive(R"({"faults": [{"lba": 1000, "kind": "unreadable"}]})");
    const auto result = create("image", {}, readLog());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "hdiutil: create failed - sector 1000 of /dev/practice0 cannot be read: "
              "Input/output error\n");
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(image() == disc.substr(0, 1000 * sectorBytes));
    struct stat status {};
    ASSERT_EQ(stat(folder.path("image.cdr").c_str(), &status), 0);
    EXPECT_LT(static_cast<std::size_t>(status.st_blocks) * 512, 3 * mebibyte);
    const auto commands = reads();
    EXPECT_EQ(std::count_if(commands.begin(), commands.end(),
                            [](const std::string& line) { return line.ends_with(" failed"); }),
              3);
}

TEST_F(HdiutilTest, ASectorThatFailsTwiceAndIsGoodThenIsNoFailure) {
    const std::string disc = insert(patternBytes(3 * mebibyte));
    drive(R"({"faults": [{"lba": 700, "kind": "flaky", "times": 2}]})");
    const auto result = create("image");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilTest, ASectorThatTakesLongIsWaitedFor) {
    const std::string disc = insert(patternBytes(3 * mebibyte));
    drive(R"({"faults": [{"lba": 700, "kind": "hang", "seconds": 0.3}]})");
    EXPECT_EQ(create("image").status, 0);
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilTest, EveryRunReadsEverySectorFromTheDisc) {
    insert(patternBytes(3 * mebibyte + 5 * sectorBytes));
    for (const std::string name : {"first", "second"}) {
        fs::remove(folder.path("reads"));
        ASSERT_EQ(create(name, {}, readLog()).status, 0);
        std::vector<int> seen(3 * 512 + 5);
        for (const auto& line : reads()) {
            std::istringstream numbers(line);
            std::size_t first = 0;
            std::size_t count = 0;
            numbers >> first >> count;
            for (std::size_t i = first; i < first + count; ++i) {
                ++seen.at(i);
            }
        }
        EXPECT_THAT(seen, testing::Each(1)) << name;
    }
}

TEST_F(HdiutilTest, ADiscWhoseBytesChangeIsDifferentOnTheSecondRun) {
    const std::string disc = insert(patternBytes(2 * mebibyte));
    drive(R"({"faults": [{"lba": 10, "count": 2, "kind": "changed"}]})");
    ASSERT_EQ(create("first").status, 0);
    ASSERT_EQ(create("second").status, 0);
    const auto first = ScratchFolder::read(folder.path("first.cdr")).value();
    const auto second = ScratchFolder::read(folder.path("second.cdr")).value();
    EXPECT_TRUE(first == disc);
    ASSERT_EQ(second.size(), disc.size());
    EXPECT_TRUE(second.substr(0, 10 * sectorBytes) == disc.substr(0, 10 * sectorBytes));
    EXPECT_TRUE(second.substr(12 * sectorBytes) == disc.substr(12 * sectorBytes));
    for (std::size_t i = 10 * sectorBytes; i < 12 * sectorBytes; ++i) {
        ASSERT_NE(second[i], disc[i]);
    }
}

TEST_F(HdiutilTest, AnotherDiscBeginsItsRunsAnew) {
    insert(patternBytes(mebibyte));
    drive(R"({"faults": [{"lba": 10, "kind": "changed"}]})");
    ASSERT_EQ(create("first").status, 0);
    fs::rename(folder.path("drive/disc.iso"), folder.path("drive/ejected.iso"));
    const std::string other = insert(patternBytes(mebibyte, 2));
    ASSERT_EQ(create("second").status, 0);
    EXPECT_TRUE(ScratchFolder::read(folder.path("second.cdr")) == other);
}

TEST_F(HdiutilTest, ADiscThatMayNotBeReadSaysPermissionDenied) {
    insert(patternBytes(4096));
    drive(R"({"denyAccess": true})");
    const auto result = create("image");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "hdiutil: create failed - /dev/practice0: Permission denied\n");
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, AnEmptyTrayAnEmptyDiscAndNoDriveAreSentences) {
    EXPECT_EQ(create("image").err, "hdiutil: create failed - there is no disc in /dev/practice0\n");
    insert({});
    EXPECT_EQ(create("image").err,
              "hdiutil: create failed - the disc in /dev/practice0 holds no data\n");
    drive(R"({"noDrive": true})");
    EXPECT_EQ(create("image").err,
              "hdiutil: create failed - /dev/practice0: No such file or directory\n");
    drive("nonsense");
    EXPECT_THAT(create("image").err, HasSubstr("drive.json: not valid JSON"));
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, DevicesThatAreNoneAreSentences) {
    const auto of = [this](const std::string& device) {
        return ToolRun::run(ToolRun::tool("hdiutil"), {"create", "-srcdevice", device, "-format",
                                                       "UDTO", "-o", folder.path("image")});
    };
    EXPECT_EQ(of("/dev/none").err,
              "hdiutil: create failed - /dev/none: No such file or directory\n");
    EXPECT_EQ(of("/dev/null").err,
              "hdiutil: create failed - /dev/null: it is not a block device\n");
    EXPECT_EQ(of("/dev/practice0").err,
              "hdiutil: create failed - /dev/practice0: No such file or directory\n");
    ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(of(folder.path("fifo")).err,
              "hdiutil: create failed - " + folder.path("fifo") + ": it is not a block device\n");
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, AnAudioDiscIsImagedAsItStands) {
    const std::string disc = insert(patternBytes(2352UL * 700));
    drive(R"({"audio": true})");
    EXPECT_EQ(create("image").status, 0);
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilTest, ABadFrameOfAnAudioDiscIsNamed) {
    const std::string disc = insert(patternBytes(2352UL * 700));
    drive(R"({"audio": true, "faults": [{"lba": 699, "kind": "unreadable"}]})");
    EXPECT_THAT(create("image").err, HasSubstr("sector 699 of /dev/practice0"));
    EXPECT_TRUE(image() == disc.substr(0, 699UL * 2352));
}

TEST_F(HdiutilTest, RunOutSectorsAreLeftOutAndMentioned) {
    std::string disc = patternBytes(700 * sectorBytes);
    disc.replace(16 * sectorBytes, 6, std::string("\1CD001"));
    disc.replace(16 * sectorBytes + 80, 4, std::string("\xba\2\0\0", 4));  // 698
    disc.replace(16 * sectorBytes + 128, 2, std::string("\0\10", 2));
    disc.replace(510, 2, "no");
    insert(disc);
    drive(R"({"faults": [{"lba": 698, "count": 2, "kind": "unreadable"}]})");
    const auto result = create("image");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err,
              "hdiutil: left out the last 2 sectors, from sector 698: no drive reads them, and the "
              "file system ends before them\n");
    EXPECT_EQ(result.out, "created: " + folder.path("image.cdr") + "\n");
    EXPECT_TRUE(image() == disc.substr(0, 698 * sectorBytes));

    drive(R"({"faults": [{"lba": 697, "kind": "unreadable"}]})");
    EXPECT_THAT(create("second").err, HasSubstr("sector 697 of /dev/practice0 cannot be read"));
}

TEST_F(HdiutilTest, ADiscTakenOutWhileItIsReadIsAFailureThatSaysSo) {
    insert(patternBytes(8 * mebibyte));
    drive(R"({"bytesPerSecond": 8000000})");
    auto run = start("image", {"-puppetstrings"});
    ASSERT_TRUE(readUntilItCopies(*run));
    fs::rename(folder.path("drive/disc.iso"), folder.path("drive/ejected.iso"));
    const auto result = run->wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "hdiutil: create failed - the disc in /dev/practice0 was removed while it was "
              "read\n");
}

TEST_F(HdiutilTest, ADiscSwappedWhileItIsReadIsNeverAMixedImage) {
    insert(patternBytes(8 * mebibyte));
    drive(R"({"bytesPerSecond": 8000000})");
    auto run = start("image", {"-puppetstrings"});
    ASSERT_TRUE(readUntilItCopies(*run));
    folder.write("other", patternBytes(8 * mebibyte, 2));
    fs::rename(folder.path("other"), folder.path("drive/disc.iso"));
    const auto result = run->wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "hdiutil: create failed - the disc in /dev/practice0 was changed while it was "
              "read\n");
}

TEST_F(HdiutilTest, TerminatingItLeavesThePartialImage) {
    const std::string disc = insert(patternBytes(16 * mebibyte));
    drive(R"({"bytesPerSecond": 8000000})");
    auto run = start("image", {"-puppetstrings"});
    ASSERT_TRUE(readUntilItCopies(*run));
    run->signal(SIGTERM);
    EXPECT_EQ(run->wait().status, -SIGTERM);
    const auto partial = image();
    ASSERT_TRUE(partial);
    EXPECT_GE(partial->size(), 128UL * 1024);
    EXPECT_LT(partial->size(), disc.size());
    EXPECT_TRUE(disc.starts_with(*partial));
}

TEST_F(HdiutilTest, TerminatingItWorksWhileTheDriveDoesNotAnswer) {
    insert(patternBytes(mebibyte));
    drive(R"({"faults": [{"lba": 0, "kind": "hang", "seconds": 86400}]})");
    auto run = start("image", {"-puppetstrings"});
    ASSERT_EQ(run->readLine(), "PERCENT:-1");
    run->signal(SIGTERM);
    EXPECT_EQ(run->wait().status, -SIGTERM);
}

TEST_F(HdiutilTest, TerminatingItWorksThoughItWasStartedDeafToTheSignal) {
    insert(patternBytes(mebibyte));
    drive(R"({"faults": [{"lba": 0, "kind": "hang", "seconds": 86400}]})");
    auto run = start("image", {"-puppetstrings"}, {}, [] {
        std::signal(SIGTERM, SIG_IGN);
        sigset_t termination;
        sigemptyset(&termination);
        sigaddset(&termination, SIGTERM);
        sigprocmask(SIG_BLOCK, &termination, nullptr);
    });
    ASSERT_EQ(run->readLine(), "PERCENT:-1");
    run->signal(SIGTERM);
    EXPECT_EQ(run->wait().status, -SIGTERM);
}

TEST_F(HdiutilTest, WhenNobodyReadsItsProgressItStopsThoughTheDiscDoesNotOpen) {
    insert(patternBytes(mebibyte));
    // Opening the log of the reads waits for somebody to read the log.
    ASSERT_EQ(mkfifo(folder.path("reads").c_str(), 0600), 0);
    auto run = start("image", {"-puppetstrings"}, readLog());
    ASSERT_EQ(run->readLine(), "PERCENT:-1");
    run->closeOutput();
    EXPECT_EQ(run->wait().status, 1);
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, WhenNobodyReadsItsProgressItStopsAndRemovesTheImage) {
    insert(patternBytes(64 * mebibyte));
    drive(R"({"bytesPerSecond": 8000000})");
    auto run = start("image", {"-puppetstrings"});
    ASSERT_TRUE(readUntilItCopies(*run));
    ASSERT_TRUE(image());
    run->closeOutput();
    EXPECT_EQ(run->wait().status, 1);
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, WhenNobodyReadsItsProgressItStopsThoughTheDriveDoesNotAnswer) {
    insert(patternBytes(mebibyte));
    drive(R"({"faults": [{"lba": 0, "kind": "hang", "seconds": 86400}]})");
    auto run = start("image", {"-puppetstrings"});
    ASSERT_EQ(run->readLine(), "PERCENT:-1");
    run->closeOutput();
    EXPECT_EQ(run->wait().status, 1);
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, WhenNobodyHasEverReadItsProgressItEndsWithoutASignal) {
    insert(patternBytes(mebibyte));
    const auto result = create("image", {"-puppetstrings"}, {}, [] {
        std::signal(SIGPIPE, SIG_DFL);  // which another test of this program may have changed
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) {
            _exit(126);
        }
        close(ends[0]);
        close(ends[1]);
    });
    EXPECT_EQ(result.status, 1) << result.err;
    EXPECT_THAT(images(), IsEmpty());
}

TEST_F(HdiutilTest, WithoutProgressLinesNobodyNeedsToRead) {
    const std::string disc = insert(patternBytes(4 * mebibyte));
    auto run = start("image", {});
    run->closeOutput();
    EXPECT_EQ(run->wait().status, 0);
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilTest, ClosedStandardStreamsDoNotEndUpInTheImage) {
    // Its last piece is too short for uncached writing, which alone would keep the lines out.
    const std::string disc = insert(patternBytes(2 * mebibyte + sectorBytes));
    const auto result = create("image", {"-puppetstrings"}, {}, [] {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        close(STDERR_FILENO);
    });
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilTest, AFileThatMayNotGrowIsAnErrorAndNoSignal) {
    insert(patternBytes(4 * mebibyte));
    const auto result = create("image", {}, {}, [] {
        const rlimit limit{mebibyte, mebibyte};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("image.cdr: File too large"));
}

TEST_F(HdiutilTest, ADiscBeyondFourGibibytesIsImagedWhole) {
    insert({});
    const std::uint64_t size = (std::uint64_t{4} << 30) + 3 * sectorBytes;
    const std::string discPath = folder.path("drive/disc.iso");
    fs::resize_file(discPath, size);
    const std::uint64_t marks[] = {0, (std::uint64_t{4} << 30) - sectorBytes,
                                   std::uint64_t{4} << 30, size - sectorBytes};
    {
        std::fstream disc(discPath, std::ios::in | std::ios::out | std::ios::binary);
        for (const auto mark : marks) {
            disc.seekp(static_cast<std::streamoff>(mark));
            disc << patternBytes(sectorBytes, static_cast<unsigned>(mark >> 11));
        }
    }
    ASSERT_EQ(create("image").status, 0);
    ASSERT_EQ(fs::file_size(folder.path("image.cdr")), size);
    std::ifstream made(folder.path("image.cdr"), std::ios::binary);
    for (const auto mark : marks) {
        std::string sector(sectorBytes, '\0');
        made.seekg(static_cast<std::streamoff>(mark));
        made.read(sector.data(), sectorBytes);
        EXPECT_TRUE(sector == patternBytes(sectorBytes, static_cast<unsigned>(mark >> 11))) << mark;
    }
}

TEST_F(HdiutilTest, AFolderThatMayNotBeWrittenIntoIsNoLackOfAccessToTheDisc) {
    insert(patternBytes(4096));
    fs::create_directory(folder.path("closed"));
    ASSERT_EQ(chmod(folder.path("closed").c_str(), 0555), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const auto result = create("closed/image", {}, {}, [] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
            _exit(126);
        }
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "hdiutil: create failed - the folder " + folder.path("closed") +
                              " may not be written to\n");
}

}  // namespace
