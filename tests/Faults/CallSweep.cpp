// Every call of every function fails once, with every error that matters, in the runs that write.
#include <gtest/gtest.h>

#include "FaultRules.h"

namespace {

using FaultRules::Task;

constexpr qsizetype discBytes = 150 * 2048;

using Functions = std::vector<std::pair<const char*, std::vector<const char*>>>;

const Functions onContent = {
    {"open", {"EMFILE", "EIO", "EINTR"}},
    {"read", {"EIO", "EINTR"}},
    {"write", {"ENOSPC", "EIO", "EINTR", "SHORT"}},
};

// Not pipe2(): Qt ends a program that has no descriptors for its event loop, and the program looks
// for some before it begins.
const Functions others = {
    {"sync", {"EIO", "ENOSPC", "EINTR"}},
    {"rename", {"ENOSPC", "EIO", "EDQUOT"}},
    {"ftruncate", {"EIO", "EINTR"}},
    {"fallocate", {"ENOSPC", "EDQUOT", "EINTR"}},
    {"lseek", {"EIO"}},
    {"mmap", {"ENOMEM"}},
    {"spawn", {"EAGAIN", "EMFILE"}},
    {"thread", {"EAGAIN"}},
    {"unlink", {"EIO"}},
    {"link", {"EIO"}},
    {"statvfs", {"EIO"}},
    {"mkdir", {"ENOSPC"}},
    {"flock", {"EIO", "EINTR"}},
};

struct Sweep {
    Task task;
    const char* program;
    std::vector<Functions> functions;
    const char* name;

    friend void PrintTo(const Sweep& sweep, std::ostream* stream) { *stream << sweep.name; }
};

class CallSweep : public testing::TestWithParam<Sweep> {
protected:
    // One run whose Nth call fails; false when there is no such call.
    bool failCall(const std::string& function, unsigned call, const std::string& error) {
        const Task task = GetParam().task;
        const std::string program = GetParam().program;
        FaultWorld world(discBytes);
        FaultRules::prepare(world, task);
        const std::string rule =
            program + ' ' + function + " - " + std::to_string(call) + ' ' + error;
        const auto ending = world.run(FaultRules::wordsOf(task), rule);
        if (ending.faults == 0) {
            return false;
        }
        const bool isCli = program == "spindrift-cli";
        FaultRules::Allowed allowed;
        allowed.silence = isCli && function == "write";
        allowed.temporaryFiles = function == "unlink";
        allowed.brokenHistory = isCli && (function == "write" || function == "ftruncate");
        EXPECT_EQ(FaultRules::broken(world, task, ending, allowed), "")
            << rule << "\nstatus " << ending.status << "\n"
            << ending.says << "\n"
            << world.left();
        EXPECT_EQ(world.nextRip(FaultRules::targetOf(task)), "") << rule;
        return true;
    }
};

TEST_P(CallSweep, NoCallThatFailsMakesAWrongImageOrASilentFailure) {
    NEEDS_PRELOADING();
    NEEDS_ANOTHER_FILE_SYSTEM(OtherFileSystem(TestFolder()));
    unsigned runs = 0;
    for (const Functions& functions : GetParam().functions) {
        for (const auto& [function, errors] : functions) {
            for (const char* error : errors) {
                for (unsigned call = 1; failCall(function, call, error); ++call) {
                    ++runs;
                }
            }
        }
    }
    RecordProperty("runs", static_cast<int>(runs));
    EXPECT_GT(runs, 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Every, CallSweep,
    testing::Values(
        Sweep{Task::Rip, "spindrift-cli", {onContent}, "CallOfARipOnContent"},
        Sweep{Task::Rip, "spindrift-cli", {others}, "OtherCallOfARip"},
        Sweep{Task::Rip, "hdiutil", {onContent, others}, "CallOfTheImagingTool"},
        Sweep{Task::Rip, "drutil", {onContent, others}, "CallOfTheDriveTool"},
        Sweep{Task::Rip, "diskutil", {onContent, others}, "CallOfTheDiscTool"},
        Sweep{Task::ReplacingCopy, "spindrift-cli", {onContent}, "CallOfACopyOnContent"},
        Sweep{Task::ReplacingCopy, "spindrift-cli", {others}, "OtherCallOfACopy"},
        Sweep{Task::ThoroughRip, "spindrift-cli", {onContent}, "CallOfAThoroughRipOnContent"},
        Sweep{Task::ThoroughRip, "spindrift-cli", {others}, "OtherCallOfAThoroughRip"},
        Sweep{Task::ThoroughRip, "hdiutil", {onContent, others}, "CallOfBothImagings"},
        Sweep{Task::ThoroughRip, "shasum", {onContent, others}, "CallOfBothDigests"},
        Sweep{Task::Settings, "spindrift-cli", {onContent, others}, "CallOfTheSettings"}),
    [](const auto& sweep) { return std::string(sweep.param.name); });

}  // namespace
