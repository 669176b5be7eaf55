// Answers what is known about drives and their discs.
//
// The practice drive when the environment names one; else the optical drives that the kernel lists.
// The device manager's record is asked first, and where it knows the drive nothing else is: no
// device is opened and the drive is sent no command. Without a record the device itself is asked.
//
// A value used for one query on one thread; reads everything afresh.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "DeviceAccess.h"
#include "DriveFacts.h"
#include "SystemPaths.h"

class DriveQuery final {
public:
    static constexpr const char* noDriveSentence = "No optical drive found.";

    // Names are costly to find where there is no record: the disc must be read for them.
    enum class Wanted { Type, TypeAndName };

    // The device access must outlive this.
    DriveQuery(SystemPaths paths, DeviceAccess& devices);

    // The environment's practice drive or else its SPINDRIFT_DRIVE, of which either may be absent.
    void setPracticeFolder(std::optional<std::string> folder);
    void setPreferredDrive(std::optional<std::string> name);
    // Both from the environment of this process.
    void useEnvironment();

    const std::optional<std::string>& practiceFolder() const { return m_practiceFolder; }

    // The drive that the tools use when none is named: the preferred one, else the first that holds
    // a disc, else the first. Fails with NoDrive without one, with another kind when it cannot be
    // asked.
    Result<DriveFacts> defaultDrive(Wanted wanted) const;

    // The same drive's name when it is only to be ejected, which can be possible where asking the
    // drive is not. Fails as above.
    Result<std::string> defaultNode() const;

    // The drive with this device, with or without "/dev/"; other block devices are described as
    // if they were drives that always hold a disc.
    Result<DriveFacts> drive(const std::string& device, Wanted wanted) const;

    // The name of the device that is meant, without "/dev/", whether or not it holds a disc.
    Result<std::string> node(const std::string& device) const;

    // The kernel's optical drives that have a node, in the order of their numbers.
    std::vector<std::string> opticalDrives() const;

    // The device's name in the kernel's list, links followed ("cdrom" is "sr0"); absent when the
    // kernel has no such block device.
    std::optional<std::string> kernelName(const std::string& device) const;

    // Whether the kernel gives this name to optical drives.
    static bool isOpticalDrive(const std::string& name);

private:
    bool isPractice(const std::string& name) const;
    Result<DriveFacts> practiceDrive(Wanted wanted) const;
    Result<DriveFacts> blockDevice(const std::string& name, Wanted wanted) const;
    std::string attribute(const std::string& name, const std::string& file) const;
    std::uint64_t kernelBytes(const std::string& name) const;

    SystemPaths m_paths;
    DeviceAccess& m_devices;
    std::optional<std::string> m_practiceFolder;
    std::optional<std::string> m_preferredDrive;
};
