// What the preloaded library and the test tell each other, in a file that both have mapped.
#pragma once

#include <atomic>
#include <cstdint>

struct FaultState {
    std::atomic<std::uint32_t> calls;     // that the rule is about, in all processes together
    std::atomic<std::uint32_t> faults;    // that have happened
    std::atomic<std::uint32_t> released;  // 1: the calls that pause go on
};
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
