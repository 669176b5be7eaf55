// A read-only block device over a file, with sectors of 2048 bytes as an optical drive has them
// unless asked for others; no Qt.
//
// Needs the superuser: tests call SKIP_WITHOUT_LOOP_DEVICES() first.
#pragma once

#include <optional>
#include <string>

#include "Skipping.h"

class LoopDevice final {
public:
    explicit LoopDevice(const std::string& file, unsigned sectorBytes = 2048);
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
