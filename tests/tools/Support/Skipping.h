// Tests that need what a machine may not have say so, and fail where everything must run.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

inline bool everythingMustRun() {
    const char* all = std::getenv("SPINDRIFT_REQUIRE_ALL");
    return all != nullptr && std::string(all) == "1";
}

#define SKIP_BECAUSE(reason)                           \
    do {                                               \
        ASSERT_FALSE(everythingMustRun()) << (reason); \
        GTEST_SKIP() << (reason);                      \
    } while (false)
