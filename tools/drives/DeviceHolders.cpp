#include "DeviceHolders.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "SmallFile.h"
#include "Utf8.h"

namespace {

std::vector<std::string> entries(const std::string& folder) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder.c_str()), closedir);
    if (open) {
        while (const dirent* entry = readdir(open.get())) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

std::string linkTarget(const std::string& link) {
    std::array<char, PATH_MAX> target;
    const ssize_t size = readlink(link.c_str(), target.data(), target.size());
    return size < 0 ? std::string() : std::string(target.data(), static_cast<std::size_t>(size));
}

bool isIn(std::string_view path, std::string_view folder) {
    return path.substr(0, folder.size()) == folder &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

// The process number that a folder of /proc is named after; 0 for its other folders.
int processNumber(std::string_view name) {
    int number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() && end == name.data() + name.size() ? number : 0;
}

// Whether the process with this folder uses the node or anything in the folders.
bool isHolder(const std::string& process, const std::string& node,
              const std::vector<std::string>& mountPoints) {
    const auto holds = [&](const std::string& link) {
        const std::string target = linkTarget(link);
        return !target.empty() &&
               (target == node ||
                std::any_of(mountPoints.begin(), mountPoints.end(),
                            [&](const auto& folder) { return isIn(target, folder); }));
    };
    if (holds(process + "/cwd") || holds(process + "/root") || holds(process + "/exe")) {
        return true;
    }
    const std::string open = process + "/fd/";
    const auto descriptors = entries(open);
    return std::any_of(descriptors.begin(), descriptors.end(),
                       [&](const auto& descriptor) { return holds(open + descriptor); });
}

// The program of the process with this folder, in valid UTF-8.
std::string programOf(const std::string& process) {
    return Utf8::oneLine(Utf8::trimmed(SmallFile::read(process + "/comm").value_or("")));
}

// 0 when it is not known.
int parentOf(const std::string& process) {
    constexpr std::string_view key = "\nPPid:\t";
    const std::string status = SmallFile::read(process + "/status").value_or("");
    const auto at = status.find(key);
    return at == std::string::npos ? 0 : std::atoi(status.c_str() + at + key.size());
}

}  // namespace

std::vector<DeviceHolder> DeviceHolders::find(const std::string& processes, const std::string& node,
                                              const std::vector<std::string>& mountPoints) {
    std::vector<DeviceHolder> holders;
    for (const std::string& name : entries(processes)) {
        const int number = processNumber(name);
        std::string folder = processes;
        folder.append("/").append(name);
        if (number > 0 && number != getpid() && isHolder(folder, node, mountPoints)) {
            holders.push_back({number, programOf(folder)});
        }
    }
    std::sort(holders.begin(), holders.end(),
              [](const auto& left, const auto& right) { return left.process < right.process; });
    return holders;
}

std::optional<DeviceHolder> DeviceHolders::imagingProgram(const std::string& processes,
                                                          int descriptor) {
    const std::string device = linkTarget("/proc/self/fd/" + std::to_string(descriptor));
    const auto holders = find(processes, device, {});
    const auto tool = std::find_if(holders.begin(), holders.end(),
                                   [](const auto& holder) { return holder.program == "hdiutil"; });
    if (tool == holders.end()) {
        return std::nullopt;
    }
    const int parent = parentOf(processes + "/" + std::to_string(tool->process));
    const std::string program = programOf(processes + "/" + std::to_string(parent));
    return program.starts_with("spindrift") ? DeviceHolder{parent, program} : *tool;
}

std::string DeviceHolders::sentence(const std::string& node,
                                    const std::vector<DeviceHolder>& holders) {
    std::string text = node + " is in use by ";
    if (holders.empty()) {
        return text + "another program.";
    }
    for (std::size_t index = 0; index < holders.size(); ++index) {
        if (index > 0) {
            text += index + 1 == holders.size() ? " and " : ", ";
        }
        const DeviceHolder& holder = holders[index];
        text += (holder.program.empty() ? "a program" : holder.program) + " (process " +
                std::to_string(holder.process) + ")";
    }
    return text + ".";
}
