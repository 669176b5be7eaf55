// A read-only block device of 2048-byte sectors, as an optical drive has them, over a file; no Qt.
//
// Needs the superuser: tests call SKIP_WITHOUT_LOOP_DEVICES() first.
#pragma once

#include <optional>
#include <string>

#include "Skipping.h"

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

#define SKIP_WITHOUT_LOOP_DEVICES()                 \
    if (const auto reason = LoopDevice::whyNot()) { \
        SKIP_BECAUSE(*reason);                      \
    }                                               \
    static_assert(true)
