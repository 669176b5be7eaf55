// Opens a drive's tray.
//
// Owned by one run of a tool; one thread; blocks until the drive is done, which takes seconds.
#pragma once

#include <optional>
#include <string>

#include "SystemPaths.h"

class Tray final {
public:
    Tray(SystemPaths paths, std::optional<std::string> practiceFolder);

    // Unlocks the door and opens the tray of the drive with this name ("sr0"). An empty tray opens
    // too. False with the reason, a sentence, in *problem.
    bool open(const std::string& node, std::string* problem);

private:
    bool openPractice(std::string* problem) const;
    bool openDrive(const std::string& node, std::string* problem) const;

    SystemPaths m_paths;
    std::optional<std::string> m_practiceFolder;
};
