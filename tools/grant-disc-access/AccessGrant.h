// Gives one user the right to read the optical drives: at once by an access control list on each
// drive's node, and for the future by membership in the group that owns the nodes.
//
// Each step is a function of its own that main() calls in order; nothing here reads the
// environment. One thread.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DescriptorHolder.h"
#include "Result.h"

namespace AccessGrant {

// The system's own places; other ones in tests.
struct Places {
    std::string blockDevices = "/sys/class/block";
    std::string nodes = "/dev";
};

struct User {
    uid_t number = 0;
    std::string name;
    std::vector<gid_t> groups;  // the primary one too
};

// A program that adds a user to a group, and its arguments; "%u" and "%g" stand for their names.
struct MembershipTool {
    std::string program;  // absolute path
    std::vector<std::string> arguments;
};

struct Drive {
    std::string node;           // "/dev/sr0"
    DescriptorHolder location;  // names the checked node itself; cannot read it
    gid_t group = 0;            // that owns the node
};

// The user number in the text that pkexec hands over. Absent unless it is plain decimal digits, in
// range and not root, who needs no grant.
std::optional<uid_t> callingUser(const char* text);

// Absent when the system knows no such user.
std::optional<User> userWithNumber(uid_t number);

// The optical drives whose node is a block device with the kernel's own number for that drive.
// Whatever else carries such a name (a link, a file, another disk) is left out.
std::vector<Drive> opticalDrives(const Places& places);

// Adds reading for the user to the node's access control list. What the user could do before stays,
// and nobody else's rights change.
Result<void> grantReading(const Drive& drive, uid_t user);

// The name of the drive's owning group if it is one that exists for optical drives. Absent for any
// other: membership in "disk" or "root" would be far more than reading discs.
std::optional<std::string> groupForDiscs(gid_t group);
// The same decision for a name.
bool isGroupForDiscs(std::string_view name);

// Adds the user to the group by the first of these tools that is there and succeeds.
Result<void> addToGroup(const User& user, const std::string& group,
                        const std::vector<MembershipTool>& tools);

// The system's tools for that.
std::vector<MembershipTool> systemTools();

}  // namespace AccessGrant
