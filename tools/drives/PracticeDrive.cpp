#include "PracticeDrive.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <vector>

#include "DiscType.h"
#include "Utf8.h"

namespace {

using Json = nlohmann::json;

// What is wrong with drive.json or the folder; never leaves this file.
struct Wrong : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string inQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

std::string text(const Json& value, const std::string& key) {
    if (!value.is_string()) {
        throw Wrong(inQuotes(key) + " must be a text");
    }
    const auto& content = value.get_ref<const std::string&>();
    // The texts become columns of a table and values of a property list.
    if (std::any_of(content.begin(), content.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; })) {
        throw Wrong(inQuotes(key) + " must not contain control characters");
    }
    return content;
}

// What a real drive can say of itself.
std::string printableText(const Json& value, const std::string& key) {
    std::string content = text(value, key);
    if (std::any_of(content.begin(), content.end(), [](char c) { return c < ' ' || c > '~'; })) {
        throw Wrong(inQuotes(key) + " must be of printable ASCII characters only");
    }
    return content;
}

bool boolean(const Json& value, const std::string& key) {
    if (!value.is_boolean()) {
        throw Wrong(inQuotes(key) + " must be true or false");
    }
    return value.get<bool>();
}

std::uint64_t wholeNumber(const Json& value, const std::string& key, std::uint64_t least) {
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() < least) {
        throw Wrong(inQuotes(key) + " must be a whole number, at least " + std::to_string(least));
    }
    return value.get<std::uint64_t>();
}

double seconds(const Json& value) {
    if (!value.is_number() || !std::isfinite(value.get<double>()) || value.get<double>() < 0) {
        throw Wrong("\"seconds\" must be a number, at least 0");
    }
    return value.get<double>();
}

// Anything that can stand as a type in drutil's report, where "none" means that there is no disc.
std::string discType(const Json& value, const std::string& key) {
    std::string type = text(value, key);
    std::string lower = type;
    lower.erase(std::remove_if(lower.begin(), lower.end(), [](char c) { return c == ' '; }),
                lower.end());
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    if (lower.empty() || lower == "none" || type.find(':') != std::string::npos) {
        throw Wrong(inQuotes(key) + " must be a type of disc, not " + inQuotes(type));
    }
    return type;
}

PracticeFault::Kind faultKind(const Json& value) {
    const std::string name = text(value, "kind");
    if (name == "unreadable") {
        return PracticeFault::Kind::Unreadable;
    }
    if (name == "flaky") {
        return PracticeFault::Kind::Flaky;
    }
    if (name == "hang") {
        return PracticeFault::Kind::Hang;
    }
    if (name == "changed") {
        return PracticeFault::Kind::Changed;
    }
    throw Wrong("a fault's \"kind\" must be unreadable, flaky, hang or changed, not " +
                inQuotes(name));
}

PracticeFault fault(const Json& value) {
    if (!value.is_object()) {
        throw Wrong("each of the \"faults\" must be an object");
    }
    if (!value.contains("lba") || !value.contains("kind")) {
        throw Wrong("a fault needs \"lba\" and \"kind\"");
    }
    PracticeFault result;
    result.lba = wholeNumber(value["lba"], "lba", 0);
    result.kind = faultKind(value["kind"]);
    if (value.contains("count")) {
        result.count = wholeNumber(value["count"], "count", 1);
    }
    if (value.contains("times")) {
        result.times = wholeNumber(value["times"], "times", 1);
    }
    if (value.contains("seconds")) {
        result.seconds = seconds(value["seconds"]);
    }
    if (result.count > std::numeric_limits<std::uint64_t>::max() - result.lba) {
        throw Wrong("a fault's \"lba\" and \"count\" are too large together");
    }
    return result;
}

// What drive.json says of the disc, used when one is in the tray.
struct DiscKeys {
    std::optional<std::string> type;
    std::optional<std::string> volumeName;
    bool audio = false;
};

void apply(const Json& root, PracticeDrive& drive, DiscKeys& disc) {
    if (!root.is_object()) {
        throw Wrong("it must hold one JSON object");
    }
    for (const auto& [key, value] : root.items()) {
        if (key == "vendor") {
            drive.vendor = printableText(value, key);
        } else if (key == "product") {
            drive.product = printableText(value, key);
        } else if (key == "revision") {
            drive.revision = printableText(value, key);
        } else if (key == "bytesPerSecond") {
            drive.bytesPerSecond = wholeNumber(value, key, 0);
        } else if (key == "discType") {
            disc.type = discType(value, key);
        } else if (key == "audio") {
            disc.audio = boolean(value, key);
        } else if (key == "volumeName") {
            disc.volumeName = text(value, key);
        } else if (key == "denyAccess") {
            drive.denyAccess = boolean(value, key);
        } else if (key == "failEject") {
            drive.failEject = boolean(value, key);
        } else if (key == "noDrive") {
            drive.noDrive = boolean(value, key);
        } else if (key == "faults") {
            if (!value.is_array()) {
                throw Wrong("\"faults\" must be a list");
            }
            std::transform(value.begin(), value.end(), std::back_inserter(drive.faults), fault);
        }
    }
}

// Refuses a name that an object gives twice: the parser would take the last value without a word.
class UniqueNames {
public:
    bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) {
            m_open.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            m_open.pop_back();
        } else if (event == Json::parse_event_t::key) {
            const auto& name = parsed.get_ref<const std::string&>();
            if (!m_open.back().insert(name).second) {
                throw Wrong(inQuotes(name) + " is given twice");
            }
        }
        return true;
    }

private:
    std::vector<std::set<std::string>> m_open;  // the names so far of each object that is open
};

bool readWhole(const std::string& path, std::string& content) {
    std::ifstream file(path, std::ios::binary);
    content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return file.is_open() && !file.bad();
}

void readSettings(PracticeDrive& drive, DiscKeys& disc) {
    const std::string path = drive.folder + "/drive.json";
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return;
        }
        throw Wrong(path + ": " + std::strerror(errno));
    }
    std::string content;
    if (!S_ISREG(status.st_mode) || !readWhole(path, content)) {
        throw Wrong(path + ": it cannot be read");
    }
    // The parser takes a null byte for the end.
    if (content.find('\0') != std::string::npos) {
        throw Wrong(path + ": not valid JSON: it holds a null byte");
    }
    try {
        apply(Json::parse(content, UniqueNames()), drive, disc);
    } catch (const Json::exception& problem) {
        std::string what = problem.what();
        std::replace(what.begin(), what.end(), '\n', ' ');
        throw Wrong(path + ": not valid JSON: " + what);
    } catch (const Wrong& wrong) {
        throw Wrong(path + ": " + wrong.what());
    }
}

std::optional<PracticeDisc> readDisc(const PracticeDrive& drive, const DiscKeys& keys) {
    PracticeDisc disc;
    disc.path = drive.folder + "/" + PracticeDrive::discFile;
    struct stat status {};
    if (stat(disc.path.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        throw Wrong(disc.path + ": " + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw Wrong(disc.path + ": it is not a regular file");
    }
    disc.bytes = static_cast<std::uint64_t>(status.st_size);
    disc.audio = keys.audio;
    disc.type = keys.type.value_or(std::string(DiscType::ofSize(disc.bytes)));
    disc.volumeName = keys.volumeName;
    return disc;
}

}  // namespace

std::optional<std::string> PracticeDrive::chosenFolder() {
    const char* folder = std::getenv(environmentVariable);
    if (folder == nullptr || *folder == '\0') {
        return std::nullopt;
    }
    return std::string(folder);
}

Result<PracticeDrive> PracticeDrive::read(const std::string& folder) {
    PracticeDrive drive;
    drive.folder = folder;
    while (drive.folder.size() > 1 && drive.folder.back() == '/') {
        drive.folder.pop_back();
    }
    try {
        struct stat status {};
        if (stat(drive.folder.c_str(), &status) != 0) {
            throw Wrong("the practice drive " + folder + ": " + std::strerror(errno));
        }
        if (!S_ISDIR(status.st_mode)) {
            throw Wrong("the practice drive " + folder + ": it is not a folder");
        }
        DiscKeys disc;
        readSettings(drive, disc);
        drive.disc = readDisc(drive, disc);
    } catch (const Wrong& wrong) {
        return Failure{Failure::Kind::System, Utf8::oneLine(wrong.what())};
    }
    return drive;
}
