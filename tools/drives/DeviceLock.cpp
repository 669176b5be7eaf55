#include "DeviceLock.h"

#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <thread>

#include "DeviceHolders.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(2);
constexpr auto tryEvery = std::chrono::milliseconds(50);

Failure busy(const std::string& device, const std::optional<DeviceHolder>& reader) {
    return {Failure::Kind::Busy,
            device + " is busy: " +
                (reader ? reader->program + " (pid " + std::to_string(reader->process) + ")"
                        : "another program") +
                " reads it"};
}

// Takes the exclusive lock for a moment, then the one that is to be kept.
Result<void> lock(int descriptor, int kept, const std::string& device,
                  const std::string& processes) {
    const auto giveUp = Clock::now() + patience;
    // A change of the lock lets go of it first, and another program may come between.
    while (flock(descriptor, LOCK_EX | LOCK_NB) != 0 || flock(descriptor, kept | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK) {
            return {};
        }
        // An imaging run that was told to end may need a moment; one that goes on is a reason not
        // to eject at once.
        const auto reader = DeviceHolders::imagingProgram(processes, descriptor);
        if (Clock::now() >= giveUp || (reader && kept == LOCK_UN)) {
            return busy(device, reader);
        }
        std::this_thread::sleep_for(tryEvery);
    }
    return {};
}

}  // namespace

Result<void> DeviceLock::holdForReading(int descriptor, const std::string& device,
                                        const std::string& processes) {
    return lock(descriptor, LOCK_SH, device, processes);
}

Result<void> DeviceLock::checkThatNobodyReads(int descriptor, const std::string& device,
                                              const std::string& processes) {
    return lock(descriptor, LOCK_UN, device, processes);
}
