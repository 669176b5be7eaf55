// A machine made of files: what the kernel and the device manager tell about its drives.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "DeviceAccess.h"
#include "DiscService.h"
#include "ScratchFolder.h"
#include "SystemPaths.h"

// Answers for devices from what a test put in, and notes every question.
class FakeDevices final : public DeviceAccess {
public:
    Result<MediumFacts> medium(const std::string& node) override;
    std::string label(const std::string& node) override;
    Result<void> eject(const std::string& node) override;

    std::map<std::string, MediumFacts> media;  // by the node's last name
    std::map<std::string, std::string> labels;
    std::string mediumError;  // not empty: no device can be asked
    Result<void> ejected;
    std::vector<std::string> questions;  // "medium sr0", "label sr0", "eject sr0"
};

class FakeService final : public DiscService {
public:
    explicit FakeService(std::string mountTable) : m_mountTable(std::move(mountTable)) {}

    Result<void> unmount(const std::string& device) override;
    Result<void> eject(const std::string& device) override;
    Result<void> unmountFolder(const std::string& folder) override;

    Result<void> unmountResult;
    Result<void> ejectResult = Failure{Failure::Kind::Unavailable, "no service"};
    Result<void> unmountFolderResult;
    bool removesMounts = true;       // whether a successful unmount is seen in the table
    std::vector<std::string> calls;  // "unmount sr0", "eject sr0", "unmountFolder /media/A"

private:
    void dropLastMount();

    std::string m_mountTable;
};

class FakeMachine final {
public:
    FakeMachine();

    SystemPaths paths() const;
    std::string path(const std::string& relative) const { return m_folder.path(relative); }

    // A drive as the kernel lists it; the size is in bytes.
    void addDrive(const std::string& name, const std::string& number, std::uint64_t bytes = 0);
    void setAttribute(const std::string& name, const std::string& file, const std::string& text);
    void removeNode(const std::string& name);
    void setRecord(const std::string& number, const std::string& record);
    void setMounts(const std::string& mountinfo);
    // A process with these links, such as {"cwd", "/media/A"} or {"fd/3", "/dev/sr0"}.
    void addProcess(int number, const std::string& program,
                    const std::map<std::string, std::string>& links, int parent = 1);
    std::string mountTable() const { return m_folder.path("proc/self/mountinfo"); }

private:
    ScratchFolder m_folder;
};

// The device manager's record of a drive with a DVD+R DL in it, as one machine had it.
extern const char* const dualLayerRecord;
