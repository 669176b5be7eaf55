#include "AccessGrant.h"

#include <acl/libacl.h>
#include <gmock/gmock.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "FakeMachine.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

TEST(AccessGrantTest, ThePlainNumberOfAnOrdinaryUserIsTaken) {
    EXPECT_EQ(AccessGrant::callingUser("1000"), 1000U);
    EXPECT_EQ(AccessGrant::callingUser("1"), 1U);
    EXPECT_EQ(AccessGrant::callingUser("4294967294"), 4294967294U);
}

TEST(AccessGrantTest, EveryOtherTextNamesNoUser) {
    EXPECT_EQ(AccessGrant::callingUser(nullptr), std::nullopt);
    for (const char* text :
         {"", "0", "00", "-1", "+1000", " 1000", "1000 ", "1000\n", "0x3e8", "1e3", "1000.0",
          "root", "4294967295", "4294967296", "4294968296", "99999999999999999999", "\xD9\xA1"}) {
        EXPECT_EQ(AccessGrant::callingUser(text), std::nullopt) << text;
    }
}

TEST(AccessGrantTest, AUserThatTheSystemDoesNotKnowIsNoUser) {
    EXPECT_EQ(AccessGrant::userWithNumber(4'000'000'000U), std::nullopt);
}

TEST(AccessGrantTest, AKnownUserHasANameAndGroups) {
    const auto user = AccessGrant::userWithNumber(0);
    ASSERT_TRUE(user);
    EXPECT_EQ(user->name, "root");
    EXPECT_THAT(user->groups, Not(IsEmpty()));
}

TEST(AccessGrantTest, OnlyTheGroupsMadeForOpticalDrivesAreJoined) {
    EXPECT_TRUE(AccessGrant::isGroupForDiscs("cdrom"));
    EXPECT_TRUE(AccessGrant::isGroupForDiscs("optical"));
    for (const char* name : {"disk", "root", "sudo", "wheel", "cdrom2", "CDROM", ""}) {
        EXPECT_FALSE(AccessGrant::isGroupForDiscs(name)) << name;
    }
    EXPECT_EQ(AccessGrant::groupForDiscs(0), std::nullopt);
    EXPECT_EQ(AccessGrant::groupForDiscs(4'000'000'000U), std::nullopt);
}

// A tool that writes down how it was called, and ends with this status.
class MembershipTest : public testing::Test {
protected:
    AccessGrant::MembershipTool tool(const std::string& name, int status,
                                     const std::vector<std::string>& arguments) {
        const std::string path = folder.write(
            name, "#!/bin/sh\n{ for word; do echo \"<$word>\"; done; env | sort; } >'" +
                      folder.path(name + ".log") + "'\nexit " + std::to_string(status) + "\n");
        EXPECT_EQ(chmod(path.c_str(), 0755), 0);
        return {path, arguments};
    }
    std::string log(const std::string& name) const {
        return ScratchFolder::read(folder.path(name + ".log")).value_or("not run");
    }

    ScratchFolder folder;
    AccessGrant::User user{1000, "-r x;$HOME", {}};
};

TEST_F(MembershipTest, TheToolGetsItsArgumentsWholeAndACleanEnvironment) {
    ASSERT_EQ(setenv("SPINDRIFT_TEST_SECRET", "leaks", 1), 0);
    EXPECT_TRUE(AccessGrant::addToGroup(user, "cdrom",
                                        {tool("usermod", 0, {"--groups", "%g", "--", "%u"})}));
    unsetenv("SPINDRIFT_TEST_SECRET");
    EXPECT_THAT(log("usermod"), HasSubstr("<--groups>\n<cdrom>\n<-->\n<-r x;$HOME>\n"));
    EXPECT_THAT(log("usermod"), HasSubstr("PATH=/usr/sbin:/usr/bin:/sbin:/bin\n"));
    EXPECT_THAT(log("usermod"), HasSubstr("LC_ALL=C\n"));
    EXPECT_THAT(log("usermod"), Not(HasSubstr("SECRET")));
}

TEST_F(MembershipTest, TheSecondToolIsTriedWhenTheFirstIsMissingOrFails) {
    const auto second = tool("second", 0, {"%u"});
    EXPECT_TRUE(AccessGrant::addToGroup(user, "cdrom", {{"/nonexistent/usermod", {}}, second}));
    unlink(folder.path("second.log").c_str());
    EXPECT_TRUE(AccessGrant::addToGroup(user, "cdrom", {tool("first", 6, {"%u"}), second}));
    EXPECT_NE(log("first"), "not run");
    EXPECT_NE(log("second"), "not run");
}

TEST_F(MembershipTest, AfterASuccessNoOtherToolIsRun) {
    EXPECT_TRUE(
        AccessGrant::addToGroup(user, "cdrom", {tool("first", 0, {}), tool("second", 0, {})}));
    EXPECT_EQ(log("second"), "not run");
}

TEST_F(MembershipTest, TheReasonNamesTheToolThatFailedLast) {
    const auto added = AccessGrant::addToGroup(user, "cdrom", {tool("first", 6, {})});
    ASSERT_FALSE(added);
    EXPECT_EQ(added.failure().sentence, folder.path("first") + " failed with status 6");
    const auto without = AccessGrant::addToGroup(user, "cdrom", {});
    ASSERT_FALSE(without);
    EXPECT_EQ(without.failure().sentence, "no tool for that is installed");
}

TEST_F(MembershipTest, TheSystemsToolsAreNamedByAbsolutePathAndTakeNoNameForAnOption) {
    for (const auto& system : AccessGrant::systemTools()) {
        EXPECT_EQ(system.program.front(), '/');
        EXPECT_THAT(system.arguments, testing::Contains("--"));
    }
}

// Nodes of its own, which only root can make.
class NodeTest : public testing::Test {
protected:
    void SetUp() override {
        std::string reason = geteuid() == 0 ? "" : "device nodes need root";
        if (reason.empty() &&
            mknod(machine.path("probe").c_str(), S_IFBLK | 0600, makedev(11, 0)) != 0) {
            reason = "this system makes no device nodes";
        }
        if (reason.empty()) {
            return;
        }
        if (std::getenv("SPINDRIFT_REQUIRE_ALL") != nullptr) {
            FAIL() << reason;
        }
        GTEST_SKIP() << reason;
    }

    AccessGrant::Places places() const { return {machine.path("sys"), machine.path("dev")}; }
    void addNode(const std::string& name, const std::string& number, mode_t type, dev_t device,
                 mode_t mode = 0660) {
        machine.addDrive(name, number);
        machine.removeNode(name);
        const std::string node = machine.path("dev/" + name);
        ASSERT_EQ(mknod(node.c_str(), type | mode, device), 0);
        ASSERT_EQ(chmod(node.c_str(), mode), 0);
    }
    std::string list(const std::string& name) const {
        const acl_t acl = acl_get_file(machine.path("dev/" + name).c_str(), ACL_TYPE_ACCESS);
        char* text = acl_to_any_text(acl, nullptr, ',', TEXT_NUMERIC_IDS | TEXT_ABBREVIATE);
        const std::string result = text == nullptr ? "" : text;
        acl_free(text);
        acl_free(acl);
        return result;
    }
    void setList(const std::string& name, const char* text) {
        const acl_t acl = acl_from_text(text);
        ASSERT_NE(acl, nullptr);
        ASSERT_EQ(acl_set_file(machine.path("dev/" + name).c_str(), ACL_TYPE_ACCESS, acl), 0);
        acl_free(acl);
    }
    void grant(uid_t user) {
        const auto drives = AccessGrant::opticalDrives(places());
        ASSERT_THAT(drives, SizeIs(1));
        const auto granted = AccessGrant::grantReading(drives.front(), user);
        ASSERT_TRUE(granted) << granted.failure().sentence;
    }

    FakeMachine machine;
};

TEST_F(NodeTest, TheDrivesOfTheKernelAreFoundWithTheirGroups) {
    addNode("sr0", "11:0", S_IFBLK, makedev(11, 0));
    addNode("sr1", "11:1", S_IFBLK, makedev(11, 1));
    ASSERT_EQ(chown(machine.path("dev/sr1").c_str(), 0, 24), 0);
    const auto drives = AccessGrant::opticalDrives(places());
    ASSERT_THAT(drives, SizeIs(2));
    EXPECT_EQ(drives[0].node, machine.path("dev/sr0"));
    EXPECT_EQ(drives[1].group, 24U);
}

TEST_F(NodeTest, WhateverOnlyLooksLikeADriveIsLeftAlone) {
    addNode("sr0", "11:0", S_IFBLK, makedev(8, 0));   // another disk under the name
    addNode("sr1", "11:1", S_IFCHR, makedev(11, 1));  // a character device
    addNode("sr2", "11:2", S_IFBLK, makedev(11, 9));  // not this drive's number
    addNode("sr3", "8:3", S_IFBLK, makedev(8, 3));    // no optical drive's number at all
    addNode("sda", "11:0", S_IFBLK, makedev(11, 0));
    addNode("sr", "11:0", S_IFBLK, makedev(11, 0));
    addNode("sr0p1", "11:0", S_IFBLK, makedev(11, 0));
    machine.addDrive("sr4", "11:4");  // a plain file
    machine.addDrive("sr5", "11:0");
    machine.removeNode("sr5");
    ASSERT_EQ(symlink("sda", machine.path("dev/sr5").c_str()), 0);
    machine.addDrive("sr6", "11:6");
    machine.removeNode("sr6");
    EXPECT_THAT(AccessGrant::opticalDrives(places()), IsEmpty());
}

TEST_F(NodeTest, TheUserMayReadAndNothingElse) {
    addNode("sr0", "11:0", S_IFBLK, makedev(11, 0));
    grant(1000);
    EXPECT_EQ(list("sr0"), "u::rw-,u:1000:r--,g::rw-,m::rw-,o::---");
}

TEST_F(NodeTest, GrantingTwiceChangesNothingMore) {
    addNode("sr0", "11:0", S_IFBLK, makedev(11, 0));
    grant(1000);
    const std::string once = list("sr0");
    grant(1000);
    EXPECT_EQ(list("sr0"), once);
}

TEST_F(NodeTest, WhatTheUserAndOthersHadBeforeStays) {
    addNode("sr0", "11:0", S_IFBLK, makedev(11, 0));
    setList("sr0", "u::rw-,u:1000:-w-,u:1001:rw-,g::r--,g:24:r--,m::rw-,o::---");
    grant(1000);
    EXPECT_EQ(list("sr0"), "u::rw-,u:1000:rw-,u:1001:rw-,g::r--,g:24:r--,m::rw-,o::---");
}

TEST_F(NodeTest, AMaskThatKeptOthersOutKeepsThemOut) {
    addNode("sr0", "11:0", S_IFBLK, makedev(11, 0));
    setList("sr0", "u::rw-,u:1001:rw-,g::rw-,g:24:r--,m::---,o::---");
    grant(1000);
    EXPECT_EQ(list("sr0"), "u::rw-,u:1000:r--,u:1001:---,g::---,g:24:---,m::r--,o::---");
}

TEST_F(NodeTest, ANodeThatIsClosedForItsGroupStaysClosedForIt) {
    addNode("sr0", "11:0", S_IFBLK, makedev(11, 0), 0600);
    grant(1000);
    EXPECT_EQ(list("sr0"), "u::rw-,u:1000:r--,g::---,m::r--,o::---");
}

TEST_F(NodeTest, TheNodeThatWasCheckedIsChangedWhateverTakesItsName) {
    addNode("sr0", "11:0", S_IFBLK, makedev(11, 0));
    const auto drives = AccessGrant::opticalDrives(places());
    ASSERT_THAT(drives, SizeIs(1));
    ASSERT_EQ(rename(machine.path("dev/sr0").c_str(), machine.path("dev/moved").c_str()), 0);
    ASSERT_EQ(mknod(machine.path("dev/sr0").c_str(), S_IFBLK | 0600, makedev(8, 0)), 0);
    EXPECT_TRUE(AccessGrant::grantReading(drives.front(), 1000));
    EXPECT_THAT(list("moved"), HasSubstr("u:1000:r--"));
    EXPECT_THAT(list("sr0"), Not(HasSubstr("1000")));
}

}  // namespace
