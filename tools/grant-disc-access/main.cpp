// grant-disc-access: lets the calling user read the optical drives. Started through pkexec, which
// has asked an administrator; takes no arguments.
//
// Threat model
//
// Who attacks: the calling user, or a program that runs as this user. What the attacker controls:
// the arguments, the environment, the working folder, open files, limits and signals, the moment,
// and the discs in the drives. What the attacker wants: more than reading optical discs, or reading
// them as somebody else. Trusted: the kernel, /sys, /dev, the account database, pkexec and the
// system's account tools.
//
// What stands against it:
// - It does one thing. There are no arguments and no configuration; an argument ends it.
// - Whom to give the right is taken from PKEXEC_UID alone, which pkexec sets to the number of the
//   user who asked. It must be plain digits, an existing user, not root. Started in another way
//   than by pkexec (not as root, with the set-user bit, without the variable) it ends. Somebody who
//   is root already can set the variable, and gains nothing by it.
// - The environment is emptied before anything else is done; folder, descriptors, signals and
//   limits are set to known values.
// - Rights that are not needed are given up for good, for this process and its children.
// - Only nodes of drives that the kernel lists as optical ("sr" and a number, block device, the
//   kernel's own number for it) are touched. They are opened as locations, without following links,
//   and changed through that same location, so that no name can be exchanged in between. No device
//   is opened for reading, so no disc can do anything.
// - Reading is all that is given, to this user and nobody else: where the list's mask must become
//   wider, the other entries first lose what the mask kept from them.
// - The user is added to the nodes' group only if it is "cdrom" or "optical". Both are this
//   system's group for optical drives; "disk" or "root" would be the whole machine.
// - The account tool is started by absolute path with an argument list, never through a shell, and
//   "--" keeps a name that begins with a hyphen from being an option.
//
// What remains: an administrator who agrees gives the user all discs in all optical drives, for
// good; "gpasswd --delete" and "setfacl --remove" take it back.
#include <sysexits.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "AccessGrant.h"
#include "Privileges.h"
#include "SmallFile.h"

namespace {

int end(int status, const std::string& sentence) {
    SmallFile::writeAll(status == EXIT_SUCCESS ? STDOUT_FILENO : STDERR_FILENO,
                        "grant-disc-access: " + sentence + "\n");
    return status;
}

// The user may read the nodes from now on; this is about nodes that the system makes later.
int grantForTheFuture(const AccessGrant::User& user,
                      const std::vector<AccessGrant::Drive>& drives) {
    bool forAll = true;
    std::vector<gid_t> groups = user.groups;
    for (const AccessGrant::Drive& drive : drives) {
        const auto group = AccessGrant::groupForDiscs(drive.group);
        forAll = forAll && group;
        if (!group || std::find(groups.begin(), groups.end(), drive.group) != groups.end()) {
            continue;
        }
        const auto added = AccessGrant::addToGroup(user, *group, AccessGrant::systemTools());
        if (!added) {
            return end(EXIT_FAILURE, user.name +
                                         " may read the optical drives until they are removed, "
                                         "but is not in the group " +
                                         *group + ": " + added.failure().sentence);
        }
        groups.push_back(drive.group);
    }
    return end(EXIT_SUCCESS,
               user.name + (forAll ? " may read the optical drives, for good, as a member of "
                                     "their group."
                                   : " may read the optical drives; some of them "
                                     "only until they are removed."));
}

}  // namespace

int main(int argc, char**) {
    if (argc != 1) {
        return end(EX_USAGE, "takes no arguments.");
    }
    if (!Privileges::isPlainRoot()) {
        return end(EX_NOPERM, "is started by pkexec.");
    }
    const auto number = AccessGrant::callingUser(std::getenv("PKEXEC_UID"));
    for (const auto prepare : {Privileges::shedInheritance, Privileges::keepOnlyNeeded}) {
        if (const auto prepared = prepare(); !prepared) {
            return end(EXIT_FAILURE, prepared.failure().sentence);
        }
    }
    const auto user = number ? AccessGrant::userWithNumber(*number) : std::nullopt;
    if (!user) {
        return end(EX_NOPERM, "is started by pkexec for an ordinary user.");
    }
    const auto drives = AccessGrant::opticalDrives(AccessGrant::Places{});
    if (drives.empty()) {
        return end(EXIT_FAILURE, "there is no optical drive.");
    }
    for (const AccessGrant::Drive& drive : drives) {
        if (const auto granted = AccessGrant::grantReading(drive, user->number); !granted) {
            return end(EXIT_FAILURE, granted.failure().sentence);
        }
    }
    return grantForTheFuture(*user, drives);
}
