// The built grant-disc-access: what it refuses. What it grants is tested through its library; here
// nothing is ever granted, because the machine's own drives are not the tests' to change.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "BuiltTool.h"
#include "ScratchFolder.h"

namespace {

using testing::HasSubstr;

constexpr int usageError = 64;
constexpr int notPermitted = 77;

ToolResult run(const std::vector<std::string>& arguments,
               const BuiltTool::Environment& environment) {
    return BuiltTool::run(BuiltTool::grantDiscAccess(), arguments, environment);
}

TEST(GrantDiscAccessTest, AnyArgumentIsRefused) {
    for (const char* argument : {"--help", "1000", "/dev/sda", ""}) {
        const ToolResult result = run({argument}, {{"PKEXEC_UID", "1000"}});
        EXPECT_EQ(result.status, usageError) << argument;
        EXPECT_THAT(result.errors, HasSubstr("takes no arguments"));
    }
}

TEST(GrantDiscAccessTest, WithoutACallingUserItIsRefused) {
    unsetenv("PKEXEC_UID");
    EXPECT_EQ(run({}, {}).status, notPermitted);
}

TEST(GrantDiscAccessTest, ATextThatIsNoOrdinaryUserIsRefused) {
    for (const char* text :
         {"", "0", "-1", "1000x", " 1000", "root", "4294967295", "99999999999"}) {
        const ToolResult result = run({}, {{"PKEXEC_UID", text}});
        EXPECT_EQ(result.status, notPermitted) << text;
        EXPECT_THAT(result.errors, HasSubstr("pkexec")) << text;
        EXPECT_EQ(result.output, "") << text;
    }
}

TEST(GrantDiscAccessTest, AUserThatTheSystemDoesNotKnowIsRefused) {
    EXPECT_EQ(run({}, {{"PKEXEC_UID", "4000000000"}}).status, notPermitted);
}

TEST(GrantDiscAccessTest, WhoIsNotRootIsRefusedWhateverTheEnvironmentSays) {
    if (geteuid() != 0) {
        EXPECT_EQ(run({}, {{"PKEXEC_UID", std::to_string(getuid())}}).status, notPermitted);
        return;
    }
    // A copy where nobody can reach it.
    const ScratchFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const std::string copy = folder.path("grant-disc-access");
    std::filesystem::copy_file(BuiltTool::grantDiscAccess(), copy);
    ASSERT_EQ(chmod(copy.c_str(), 0755), 0);
    const ToolResult result =
        BuiltTool::run("setpriv", {"--reuid=65534", "--regid=65534", "--clear-groups", copy},
                       {{"PKEXEC_UID", "65534"}});
    EXPECT_EQ(result.status, notPermitted) << result.errors;
    // With the set-user bit only the effective user is root.
    ASSERT_EQ(chmod(copy.c_str(), 04755), 0);
    const ToolResult withBit =
        BuiltTool::run("setpriv", {"--reuid=65534", "--regid=65534", "--clear-groups", copy},
                       {{"PKEXEC_UID", "65534"}});
    EXPECT_EQ(withBit.status, notPermitted) << withBit.errors;
}

TEST(GrantDiscAccessTest, ThePolicyAsksAnAdministratorForTheInstalledProgramOnly) {
    const auto policy = ScratchFolder::read(POLICY);
    ASSERT_TRUE(policy);
    EXPECT_THAT(*policy, HasSubstr("<action id=\"org.spindrift.grant-disc-access\">"));
    EXPECT_THAT(*policy,
                HasSubstr("<annotate key=\"org.freedesktop.policykit.exec.path\">" INSTALLED
                          "</annotate>"));
    for (const char* who : {"any", "inactive", "active"}) {
        EXPECT_THAT(*policy,
                    HasSubstr("<allow_" + std::string(who) + ">auth_admin</allow_" + who + ">"));
    }
}

}  // namespace
