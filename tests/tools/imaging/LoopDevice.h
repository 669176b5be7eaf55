// A read-only block device of 2048-byte sectors, as an optical drive has them, over a file; no Qt.
//
// Needs the superuser: tests call SKIP_WITHOUT_LOOP_DEVICES() first.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

class LoopDevice final {
public:
    explicit LoopDevice(const std::string& file);
    ~LoopDevice();
    LoopDevice(const LoopDevice&) = delete;
    LoopDevice& operator=(const LoopDevice&) = delete;

    const std::string& node() const { return m_node; }  // empty when it could not be made

    // Why there can be none on this machine; absent when there can.
    static std::optional<std::string> whyNot();

private:
    std::string m_node;
};

// With SPINDRIFT_REQUIRE_ALL=1 a missing loop device fails the test instead.
#define SKIP_WITHOUT_LOOP_DEVICES()                                         \
    if (const auto reason = LoopDevice::whyNot()) {                         \
        const char* all = std::getenv("SPINDRIFT_REQUIRE_ALL");             \
        ASSERT_FALSE(all != nullptr && std::string(all) == "1") << *reason; \
        GTEST_SKIP() << *reason;                                            \
    }                                                                       \
    static_assert(true)
