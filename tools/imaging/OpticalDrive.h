// An optical drive of the kernel's, and the disc that was in it when it was opened.
//
// Owned by the medium that reads from it; used by one thread. Opening never moves a tray.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "DescriptorHolder.h"
#include "DiscLayout.h"
#include "DiscMarks.h"
#include "Medium.h"
#include "Result.h"

class OpticalDrive final {
public:
    // Waits for a disc that is still spinning up. Fails with Medium when the tray is empty, with
    // NoDrive when the device is no optical drive.
    static Result<std::unique_ptr<OpticalDrive>> open(const std::string& device);

    int descriptor() const { return m_descriptor.get(); }
    DiscLayout layout() const;
    // Whether the drive says that nothing has been recorded on the disc; false when it won't say.
    bool discIsBlank() const;

    // Notes what the disc is known by after a reset. firstSector: where its data begins.
    void rememberDisc(std::optional<DiscMarks> marks, std::uint64_t firstSector);

    // As Medium::state() and Medium::confirmedState().
    Medium::State state();
    Medium::State confirmedState();

private:
    OpticalDrive(std::string device, DescriptorHolder descriptor);

    const std::string m_device;
    const DescriptorHolder m_descriptor;
    std::optional<std::uint64_t> m_disc;  // the kernel's number of the disc; absent on old kernels
    std::chrono::steady_clock::time_point m_asked;
    std::uint64_t m_firstSector = 0;
    std::optional<DiscMarks> m_marks;
};

// The kernel's number of the medium in a block device, another one for every disc; absent on
// kernels that don't count.
std::optional<std::uint64_t> diskSequence(int descriptor);
