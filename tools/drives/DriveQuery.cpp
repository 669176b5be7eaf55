#include "DriveQuery.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "DiscType.h"
#include "FileSystemLabel.h"
#include "Mmc.h"
#include "PracticeDrive.h"
#include "SmallFile.h"
#include "UdevRecord.h"
#include "Utf8.h"

namespace {

constexpr std::string_view nodePrefix = "/dev/";
constexpr const char* audioName = "Audio CD";
constexpr std::uint64_t kernelSectorBytes = 512;  // what sysfs counts in, whatever the device

std::string withoutFolder(std::string_view device) {
    if (device.substr(0, nodePrefix.size()) == nodePrefix) {
        device.remove_prefix(nodePrefix.size());
    }
    return std::string(device);
}

// The digits at the end of "sr10"; absent for anything else.
std::optional<unsigned> opticalNumber(std::string_view name) {
    if (name.substr(0, 2) != "sr") {
        return std::nullopt;
    }
    name.remove_prefix(2);
    unsigned number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size()) {
        return std::nullopt;
    }
    return number;
}

Failure notFound(const std::string& device) {
    return {Failure::Kind::NoDrive, "Could not find disk: " + device};
}

Failure noDrive() {
    return {Failure::Kind::NoDrive, DriveQuery::noDriveSentence};
}

bool isPlainName(std::string_view name) {
    return !name.empty() && name.front() != '.' && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

DiscFacts fromRecord(const UdevRecord& record, std::uint64_t deviceBytes) {
    DiscFacts disc;
    disc.type = record.discType();
    disc.blank = record.isBlank();
    disc.audio = record.isAudioOnly();
    if (disc.audio) {
        disc.volumeName = audioName;
        disc.bytes = deviceBytes / Mmc::dataSectorBytes * Mmc::audioSectorBytes;
    } else if (!disc.blank) {
        disc.volumeName = record.label();
        disc.bytes = record.isMixed() ? record.mixedDataBytes(deviceBytes) : deviceBytes;
    }
    return disc;
}

DiscFacts fromMedium(const MediumFacts& medium) {
    DiscFacts disc;
    disc.type = medium.profile.value_or(Mmc::Profile::none) == Mmc::Profile::none
                    ? DiscType::ofSize(medium.bytes)
                    : DiscType::ofProfile(*medium.profile);
    disc.blank = medium.blank;
    disc.audio = medium.audioOnly;
    disc.bytes = medium.bytes;
    if (disc.audio) {
        disc.volumeName = audioName;
    }
    return disc;
}

}  // namespace

DriveQuery::DriveQuery(SystemPaths paths, DeviceAccess& devices)
    : m_paths(std::move(paths)), m_devices(devices) {}

void DriveQuery::setPracticeFolder(std::optional<std::string> folder) {
    m_practiceFolder = std::move(folder);
}

void DriveQuery::setPreferredDrive(std::optional<std::string> name) {
    m_preferredDrive = std::move(name);
}

void DriveQuery::useEnvironment() {
    m_practiceFolder = PracticeDrive::chosenFolder();
    const char* preferred = std::getenv("SPINDRIFT_DRIVE");
    if (preferred != nullptr && *preferred != '\0') {
        m_preferredDrive = preferred;
    }
}

Result<DriveFacts> DriveQuery::defaultDrive(Wanted wanted) const {
    if (m_practiceFolder) {
        return practiceDrive(wanted);
    }
    if (m_preferredDrive) {
        const auto name = kernelName(*m_preferredDrive);
        return name ? blockDevice(*name, wanted) : noDrive();
    }
    Result<DriveFacts> best = noDrive();
    bool first = true;
    for (const std::string& name : opticalDrives()) {
        auto facts = blockDevice(name, wanted);
        if (facts && facts->disc) {
            return facts;
        }
        if (first || (facts && !best)) {
            best = std::move(facts);
        }
        first = false;
    }
    return best;
}

Result<std::string> DriveQuery::defaultNode() const {
    const auto facts = defaultDrive(Wanted::Type);
    if (facts) {
        return facts->node;
    }
    if (m_practiceFolder || facts.failure().kind == Failure::Kind::NoDrive) {
        return facts.failure();
    }
    const auto preferred = m_preferredDrive ? kernelName(*m_preferredDrive) : std::nullopt;
    if (preferred) {
        return *preferred;
    }
    const auto names = opticalDrives();  // again: the drive may have been unplugged since
    if (m_preferredDrive || names.empty()) {
        return facts.failure();
    }
    return names.front();
}

Result<DriveFacts> DriveQuery::drive(const std::string& device, Wanted wanted) const {
    const auto name = node(device);
    if (!name) {
        return name.failure();
    }
    if (!isPractice(*name)) {
        return blockDevice(*name, wanted);
    }
    auto facts = practiceDrive(wanted);
    if (!facts && facts.failure().kind == Failure::Kind::NoDrive) {
        return notFound(device);
    }
    return facts;
}

Result<std::string> DriveQuery::node(const std::string& device) const {
    const std::string name = withoutFolder(device);
    if (isPractice(name)) {
        return name;
    }
    if (auto known = kernelName(name)) {
        return *std::move(known);
    }
    return notFound(device);
}

bool DriveQuery::isOpticalDrive(const std::string& name) {
    return opticalNumber(name).has_value();
}

bool DriveQuery::isPractice(const std::string& name) const {
    return m_practiceFolder && std::string(nodePrefix) + name == PracticeDrive::deviceNode;
}

std::vector<std::string> DriveQuery::opticalDrives() const {
    std::vector<std::pair<unsigned, std::string>> found;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(m_paths.blockDevices.c_str()),
                                                     closedir);
    if (folder) {
        while (const dirent* entry = readdir(folder.get())) {
            const std::string name = entry->d_name;
            const auto number = opticalNumber(name);
            // A container can see the machine's drives in sysfs and have no node for them.
            struct stat status {};
            if (number && stat((m_paths.nodes + "/" + name).c_str(), &status) == 0) {
                found.emplace_back(*number, name);
            }
        }
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> names;
    names.reserve(found.size());
    for (auto& [number, name] : found) {
        names.push_back(std::move(name));
    }
    return names;
}

std::optional<std::string> DriveQuery::kernelName(const std::string& device) const {
    const std::string name = withoutFolder(device);
    if (!isPlainName(name)) {
        return std::nullopt;
    }
    struct stat status {};
    if (stat((m_paths.blockDevices + "/" + name).c_str(), &status) == 0) {
        return name;
    }
    const std::unique_ptr<char, void (*)(void*)> target(
        realpath((m_paths.nodes + "/" + name).c_str(), nullptr), std::free);
    if (!target) {
        return std::nullopt;
    }
    const std::string_view path = target.get();
    std::string last(path.substr(path.rfind('/') + 1));
    if (stat((m_paths.blockDevices + "/" + last).c_str(), &status) != 0) {
        return std::nullopt;
    }
    return last;
}

Result<DriveFacts> DriveQuery::practiceDrive(Wanted wanted) const {
    const auto practice = PracticeDrive::read(*m_practiceFolder);
    if (!practice) {
        return practice.failure();
    }
    if (practice->noDrive) {
        return noDrive();
    }
    DriveFacts facts;
    facts.node = withoutFolder(PracticeDrive::deviceNode);
    facts.vendor = practice->vendor;
    facts.product = practice->product;
    facts.revision = practice->revision;
    if (practice->disc) {
        DiscFacts disc;
        disc.type = practice->disc->type;
        disc.bytes = practice->disc->bytes;
        disc.audio = practice->disc->audio;
        if (disc.audio) {
            disc.volumeName = audioName;
        } else if (practice->disc->volumeName) {
            disc.volumeName = *practice->disc->volumeName;
        } else if (wanted == Wanted::TypeAndName) {
            disc.volumeName = FileSystemLabel::readFile(practice->disc->path);
        }
        facts.disc = std::move(disc);
    }
    return facts;
}

Result<DriveFacts> DriveQuery::blockDevice(const std::string& name, Wanted wanted) const {
    DriveFacts facts;
    facts.node = name;
    facts.vendor = attribute(name, "device/vendor");
    facts.product = attribute(name, "device/model");
    facts.revision = attribute(name, "device/rev");
    const std::string number = attribute(name, "dev");
    const auto record =
        number.empty() ? std::nullopt : UdevRecord::read(m_paths.udevRecords, number);
    if (record && record->knowsOpticalDrive()) {
        if (record->hasDisc()) {
            facts.disc = fromRecord(*record, kernelBytes(name));
        }
        return facts;
    }
    const std::string node = m_paths.nodes + "/" + name;
    const auto medium = m_devices.medium(node);
    if (!medium) {
        Failure failure = medium.failure();
        failure.sentence = std::string(nodePrefix) + name + ": " + failure.sentence;
        return failure;
    }
    if (!medium->present) {
        return facts;
    }
    facts.disc = fromMedium(*medium);
    if (wanted == Wanted::TypeAndName && !medium->audioOnly && !medium->blank) {
        facts.disc->volumeName = m_devices.label(node);
    }
    return facts;
}

std::string DriveQuery::attribute(const std::string& name, const std::string& file) const {
    const auto text = SmallFile::read(m_paths.blockDevices + "/" + name + "/" + file);
    return std::string(Utf8::trimmed(text.value_or("")));
}

std::uint64_t DriveQuery::kernelBytes(const std::string& name) const {
    const std::string text = attribute(name, "size");
    std::uint64_t sectors = 0;
    std::from_chars(text.data(), text.data() + text.size(), sectors);
    return sectors * kernelSectorBytes;
}
