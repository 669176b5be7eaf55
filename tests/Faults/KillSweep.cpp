// Signals at random calls of random programs of a run, until it is known that none does harm.
//
// SPINDRIFT_SEED repeats a sweep, SPINDRIFT_KILLS says how many kills each of the four runs gets.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <map>
#include <random>

#include "FaultRules.h"

namespace {

using FaultRules::Task;

constexpr qsizetype bytesOfTwoBlocks = 600 * 2048;
constexpr unsigned usualKills = 20;

struct KilledRun {
    Task run;
    const char* name;

    friend void PrintTo(const KilledRun& sweep, std::ostream* stream) { *stream << sweep.name; }
};

unsigned numberFrom(const char* variable, unsigned otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

class KillSweep : public testing::TestWithParam<KilledRun> {
protected:
    KillSweep() : m_seed(numberFrom("SPINDRIFT_SEED", std::random_device()())) {}

    template <std::size_t size>
    std::string anyOf(const std::array<const char*, size>& texts) {
        return texts[m_random() % size];
    }

    // How many calls the program makes in an undisturbed run.
    unsigned callsOf(const std::string& program) const {
        FaultWorld world(bytesOfTwoBlocks);
        FaultRules::prepare(world, GetParam().run);
        return world.run(FaultRules::wordsOf(GetParam().run), program + " any - 100000 EIO").calls;
    }

    void killAtRandom() {
        const Task run = GetParam().run;
        const std::string program =
            m_random() % 2 == 0 ? "spindrift-cli"
            : run == Task::ThoroughRip
                ? anyOf(std::array{"hdiutil", "hdiutil", "shasum", "diskutil", "drutil"})
                : anyOf(std::array{"hdiutil", "hdiutil", "diskutil", "drutil"});
        if (!m_calls.contains(program)) {
            m_calls[program] = callsOf(program);
        }
        ASSERT_GT(m_calls[program], 0U) << program;
        const std::string signal = anyOf(std::array{"TERM", "INT", "HUP", "KILL"});
        const std::string target = program == "spindrift-cli"
                                       ? anyOf(std::array{"self", "group"})
                                       : anyOf(std::array{"self", "group", "parent"});
        const unsigned call = 1 + static_cast<unsigned>(m_random()) % m_calls[program];
        const std::string rule =
            program + " any - " + std::to_string(call) + ' ' + signal + '>' + target;
        SCOPED_TRACE(rule + ", SPINDRIFT_SEED=" + std::to_string(m_seed));

        FaultWorld world(bytesOfTwoBlocks);
        FaultRules::prepare(world, run);
        const auto ending = world.run(FaultRules::wordsOf(run), rule);
        FaultRules::Allowed allowed;
        allowed.signal = program == "spindrift-cli" || target != "self";
        EXPECT_EQ(FaultRules::broken(world, run, ending, allowed), "")
            << "status " << ending.status << "\n"
            << ending.says << "\n"
            << world.left();
        EXPECT_EQ(world.nextRip(FaultRules::targetOf(run)), "");
        m_hits += ending.faults > 0 ? 1 : 0;
    }

    const unsigned m_seed;
    std::mt19937 m_random{m_seed};
    std::map<std::string, unsigned> m_calls;
    unsigned m_hits = 0;
};

TEST_P(KillSweep, ASignalAtAnyCallLeavesOnlyWhatItMay) {
    NEEDS_PRELOADING();
    NEEDS_ANOTHER_FILE_SYSTEM(OtherFileSystem(TestFolder()));
    std::cout << "SPINDRIFT_SEED=" << m_seed << std::endl;
    const unsigned kills = numberFrom("SPINDRIFT_KILLS", usualKills);
    for (unsigned kill = 0; kill < kills; ++kill) {
        killAtRandom();
    }
    // How many calls there are depends a little on the time.
    EXPECT_GT(m_hits, kills / 2);
}

INSTANTIATE_TEST_SUITE_P(Of, KillSweep,
                         testing::Values(KilledRun{Task::Rip, "ARip"},
                                         KilledRun{Task::Copy, "ACopy"},
                                         KilledRun{Task::ThoroughRip, "AThoroughRip"},
                                         KilledRun{Task::SpeedTest, "ASpeedTest"}),
                         [](const auto& sweep) { return std::string(sweep.param.name); });

}  // namespace
