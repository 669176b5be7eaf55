#include "AccessGrant.h"

#include <acl/libacl.h>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <limits>
#include <memory>

#include "SmallFile.h"
#include "Utf8.h"

namespace {

// The number that the kernel has given to its optical drives since its first versions.
constexpr unsigned opticalMajor = 11;

using AclHolder = std::unique_ptr<std::remove_pointer_t<acl_t>, int (*)(void*)>;

bool isDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
        return character >= '0' && character <= '9';
    });
}

bool isOpticalName(std::string_view name) {
    return name.substr(0, 2) == "sr" && isDigits(name.substr(2));
}

std::vector<std::string> opticalNames(const std::string& folder) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder.c_str()), closedir);
    if (open) {
        while (const dirent* entry = readdir(open.get())) {
            if (isOpticalName(entry->d_name)) {
                names.emplace_back(entry->d_name);
            }
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The user's own entry if there is one, else a new and empty one; null on failure.
acl_entry_t entryOf(acl_t& list, uid_t user) {
    acl_entry_t entry = nullptr;
    for (int which = ACL_FIRST_ENTRY; acl_get_entry(list, which, &entry) == 1;
         which = ACL_NEXT_ENTRY) {
        acl_tag_t tag = 0;
        if (acl_get_tag_type(entry, &tag) != 0 || tag != ACL_USER) {
            continue;
        }
        const std::unique_ptr<void, int (*)(void*)> number(acl_get_qualifier(entry), acl_free);
        if (number && *static_cast<const uid_t*>(number.get()) == user) {
            return entry;
        }
    }
    if (acl_create_entry(&list, &entry) != 0 || acl_set_tag_type(entry, ACL_USER) != 0 ||
        acl_set_qualifier(entry, &user) != 0) {
        return nullptr;
    }
    return entry;
}

acl_entry_t maskOf(acl_t list) {
    acl_entry_t entry = nullptr;
    for (int which = ACL_FIRST_ENTRY; acl_get_entry(list, which, &entry) == 1;
         which = ACL_NEXT_ENTRY) {
        acl_tag_t tag = 0;
        if (acl_get_tag_type(entry, &tag) == 0 && tag == ACL_MASK) {
            return entry;
        }
    }
    return nullptr;
}

constexpr std::array<acl_perm_t, 3> allRights = {ACL_READ, ACL_WRITE, ACL_EXECUTE};

// Takes from each entry that the mask limits the rights that it withholds, so that a wider mask
// gives nobody anything.
bool applyMask(acl_t list, acl_entry_t mask) {
    acl_permset_t allowed = nullptr;
    if (acl_get_permset(mask, &allowed) != 0) {
        return false;
    }
    acl_entry_t entry = nullptr;
    for (int which = ACL_FIRST_ENTRY; acl_get_entry(list, which, &entry) == 1;
         which = ACL_NEXT_ENTRY) {
        acl_tag_t tag = 0;
        acl_permset_t rights = nullptr;
        if (acl_get_tag_type(entry, &tag) != 0 || acl_get_permset(entry, &rights) != 0) {
            return false;
        }
        if (tag != ACL_USER && tag != ACL_GROUP && tag != ACL_GROUP_OBJ) {
            continue;
        }
        for (const acl_perm_t right : allRights) {
            if (acl_get_perm(allowed, right) == 0 && acl_delete_perm(rights, right) != 0) {
                return false;
            }
        }
    }
    return true;
}

bool addReading(acl_entry_t entry) {
    acl_permset_t rights = nullptr;
    return entry != nullptr && acl_get_permset(entry, &rights) == 0 &&
           acl_add_perm(rights, ACL_READ) == 0;
}

// A list without a mask has no entries that one would limit, so a computed one widens nothing.
bool makeRoomInMask(acl_t& list) {
    const acl_entry_t mask = maskOf(list);
    return mask == nullptr ? acl_calc_mask(&list) == 0 : addReading(mask);
}

bool allowReading(acl_t& list, uid_t user) {
    const acl_entry_t mask = maskOf(list);
    if (mask != nullptr && !applyMask(list, mask)) {
        return false;
    }
    return addReading(entryOf(list, user)) && makeRoomInMask(list) && acl_valid(list) == 0;
}

std::string filledIn(const std::string& argument, const std::string& user,
                     const std::string& group) {
    if (argument == "%u") {
        return user;
    }
    return argument == "%g" ? group : argument;
}

// The program's exit status; 127 when it cannot be started, 128 when a signal ended it.
int run(const std::string& program, std::vector<std::string> words) {
    std::array<char*, 3> environment = {};
    std::string path = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
    std::string language = "LC_ALL=C";
    environment[0] = path.data();
    environment[1] = language.data();
    words.insert(words.begin(), program);
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t child = -1;
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, pointers.data(),
                    environment.data()) != 0) {
        return 127;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return 128;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

}  // namespace

std::optional<uid_t> AccessGrant::callingUser(const char* text) {
    if (text == nullptr || !isDigits(text)) {
        return std::nullopt;
    }
    const std::string_view digits = text;
    uid_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    // The largest number means "no user" to the kernel.
    if (error != std::errc() || end != digits.data() + digits.size() || number == 0 ||
        number == std::numeric_limits<uid_t>::max()) {
        return std::nullopt;
    }
    return number;
}

std::optional<AccessGrant::User> AccessGrant::userWithNumber(uid_t number) {
    const passwd* entry = getpwuid(number);
    if (entry == nullptr || entry->pw_name == nullptr || *entry->pw_name == '\0') {
        return std::nullopt;
    }
    User user{number, entry->pw_name, {}};
    const gid_t primary = entry->pw_gid;
    int count = 64;
    user.groups.resize(static_cast<std::size_t>(count));
    if (getgrouplist(user.name.c_str(), primary, user.groups.data(), &count) < 0) {
        user.groups.resize(static_cast<std::size_t>(count));
        if (getgrouplist(user.name.c_str(), primary, user.groups.data(), &count) < 0) {
            count = 0;
        }
    }
    user.groups.resize(static_cast<std::size_t>(count));
    return user;
}

std::vector<AccessGrant::Drive> AccessGrant::opticalDrives(const Places& places) {
    std::vector<Drive> drives;
    for (const std::string& name : opticalNames(places.blockDevices)) {
        const std::string number =
            SmallFile::read(places.blockDevices + "/" + name + "/dev").value_or("");
        const std::string node = places.nodes + "/" + name;
        // Only a location: neither reads the drive nor moves its tray, and what is checked here is
        // what is changed later, whatever the name then stands for.
        DescriptorHolder location(open(node.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat status {};
        if (!location.isOpen() || fstat(location.get(), &status) != 0 || !S_ISBLK(status.st_mode) ||
            major(status.st_rdev) != opticalMajor ||
            Utf8::trimmed(number) != std::to_string(major(status.st_rdev)) + ":" +
                                         std::to_string(minor(status.st_rdev))) {
            continue;
        }
        drives.push_back({node, std::move(location), status.st_gid});
    }
    return drives;
}

Result<void> AccessGrant::grantReading(const Drive& drive, uid_t user) {
    const std::string path = "/proc/self/fd/" + std::to_string(drive.location.get());
    const AclHolder before(acl_get_file(path.c_str(), ACL_TYPE_ACCESS), acl_free);
    acl_t list = before ? acl_dup(before.get()) : nullptr;
    const bool done = list != nullptr && allowReading(list, user) &&
                      acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list) == 0;
    const int error = errno;
    acl_free(list);
    return done ? Result<void>() : Failure::ofErrno(error, drive.node);
}

std::optional<std::string> AccessGrant::groupForDiscs(gid_t group) {
    const struct group* entry = group == 0 ? nullptr : getgrgid(group);
    if (entry == nullptr || entry->gr_name == nullptr || !isGroupForDiscs(entry->gr_name)) {
        return std::nullopt;
    }
    return std::string(entry->gr_name);
}

bool AccessGrant::isGroupForDiscs(std::string_view name) {
    return name == "cdrom" || name == "optical";
}

Result<void> AccessGrant::addToGroup(const User& user, const std::string& group,
                                     const std::vector<MembershipTool>& tools) {
    Failure failure{Failure::Kind::System, "no tool for that is installed"};
    for (const MembershipTool& tool : tools) {
        if (access(tool.program.c_str(), X_OK) != 0) {
            continue;
        }
        std::vector<std::string> arguments;
        for (const std::string& argument : tool.arguments) {
            arguments.push_back(filledIn(argument, user.name, group));
        }
        const int status = run(tool.program, arguments);
        if (status == 0) {
            return {};
        }
        failure.sentence = tool.program + " failed with status " + std::to_string(status);
    }
    return failure;
}

std::vector<AccessGrant::MembershipTool> AccessGrant::systemTools() {
    // The second knows users that a directory service gives, whom the first refuses.
    return {{"/usr/sbin/usermod", {"--append", "--groups", "%g", "--", "%u"}},
            {"/usr/bin/gpasswd", {"--add", "%u", "--", "%g"}}};
}
