// The built programs on a machine made of files that has an optical drive: the programs see it in
// their own mount namespace, where the kernel's and the system's folders are covered by others.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>

#include "BuiltTool.h"
#include "FakeMachine.h"

namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

// Covers the folders, then runs what follows. $0 is the machine's folder.
const char* const coverFolders = R"sh(
set -e
mkdir "$0/etc"
for name in group gshadow ld.so.cache login.defs nsswitch.conf pam.d passwd shadow; do
    [ ! -e "/etc/$name" ] || cp -a "/etc/$name" "$0/etc"
done
echo 'spintest:x:54321:54321::/nonexistent:/bin/false' >>"$0/etc/passwd"
echo 'spintest:!:19000:0:99999:7:::' >>"$0/etc/shadow"
echo 'spintest:x:54321:' >>"$0/etc/group"
mount --bind "$0/sys" /sys/class/block
mount --bind "$0/etc" /etc
mount -t tmpfs tmpfs /run
mkdir -p /run/udev/data
cp "$0"/udev/* /run/udev/data
mount -t tmpfs -o dev tmpfs /dev
mknod /dev/sr0 b 11 0
mknod -m 666 /dev/null c 1 3
chown 0:"$(getent group cdrom | cut -d: -f3)" /dev/sr0
chmod 660 /dev/sr0
exec 2>&1
# A leak checker cannot look at a traced program.
export ASAN_OPTIONS=detect_leaks=0
)sh";

// The address sanitizer cannot start with less than it wants.
#ifdef __SANITIZE_ADDRESS__
constexpr const char* dataLimit = "";
#else
constexpr const char* dataLimit = "ulimit -Sd 4000000\n";
#endif

class WholeProgramTest : public testing::Test {
protected:
    void SetUp() override {
        const std::string reason = obstacle();
        if (!reason.empty()) {
            if (std::getenv("SPINDRIFT_REQUIRE_ALL") != nullptr) {
                FAIL() << reason;
            }
            GTEST_SKIP() << reason;
        }
        machine.addDrive("sr0", "11:0", 8'388'608);
        machine.setRecord("11:0", dualLayerRecord);
    }

    static std::string obstacle() {
        if (geteuid() != 0) {
            return "a mount namespace needs root";
        }
        if (BuiltTool::run("unshare", {"-m", "mount", "-t", "tmpfs", "tmpfs", "/mnt"}).status !=
            0) {
            return "this system makes no mount namespaces";
        }
        return BuiltTool::run("strace", {"-o", "/dev/null", "true"}).status == 0
                   ? ""
                   : "this system traces no programs";
    }

    // Runs the script on the machine; both outputs come together.
    ToolResult run(const std::string& script) const {
        return BuiltTool::run(
            "unshare", {"-m", "sh", "-c", coverFolders + script, machine.path("."),
                        BuiltTool::drutil(), BuiltTool::diskutil(), BuiltTool::grantDiscAccess()});
    }
    std::string trace() const {
        return ScratchFolder::read(machine.path("trace")).value_or("no trace");
    }

    FakeMachine machine;
};

TEST_F(WholeProgramTest, WithTheRecordAPollOpensNoDeviceAndSendsNoCommand) {
    const ToolResult result = run(R"sh(
traced="strace -f -A -o $0/trace -e trace=openat,open,openat2,ioctl"
$traced "$1" status
$traced "$2" info -plist /dev/sr0
$traced "$2" list -plist /dev/sr0
$traced "$2" list /dev/sr0
)sh");
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("Type: DVD+R DL              Name: /dev/sr0\n"));
    EXPECT_THAT(result.output, HasSubstr("<string>My Disc</string>"));
    // The trace shows what was opened, so what it does not show was not.
    EXPECT_THAT(trace(), HasSubstr("/run/udev/data/b11:0"));
    EXPECT_THAT(trace(), Not(HasSubstr("\"/dev/sr0\"")));
    EXPECT_THAT(trace(), Not(HasSubstr("ioctl")));
}

TEST_F(WholeProgramTest, WithTheRecordNoFurtherLibraryIsLoaded) {
    const ToolResult result =
        run("strace -o \"$0/trace\" -e trace=openat \"$2\" info -plist /dev/sr0");
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(trace(), HasSubstr("libc.so"));
    EXPECT_THAT(trace(), Not(ContainsRegex("lib(blkid|systemd|udev)")));
}

TEST_F(WholeProgramTest, WithoutTheRecordTheDeviceIsAskedAndItsErrorReported) {
    // There is no driver behind this node.
    const ToolResult result = run("rm /run/udev/data/*; \"$1\" status");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("drutil: /dev/sr0: "));
}

TEST_F(WholeProgramTest, AGrantAddsTheReaderToTheNodeAndToItsGroup) {
    const ToolResult result = run(R"sh(id -nG spintest
PKEXEC_UID=54321 "$3"
id -nG spintest
getfacl -cpn /dev/sr0
PKEXEC_UID=54321 "$3")sh");
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(
        result.output,
        HasSubstr(
            "spintest\ngrant-disc-access: spintest may read the optical drives, for good, as a "
            "member of their group.\n"));
    EXPECT_THAT(result.output, HasSubstr("spintest cdrom\n"));
    EXPECT_THAT(result.output,
                HasSubstr("user::rw-\nuser:54321:r--\ngroup::rw-\nmask::rw-\nother::---\n"));
}

TEST_F(WholeProgramTest, AGrantNeedsOnlyFewRightsAndHandsNoMoreOn) {
    // The account tool here is a script that shows what it was given.
    const ToolResult result = run(R"sh(cat >"$0/usermod" <<'END'
#!/bin/sh
grep -E 'CapBnd|CapPrm|CapInh|NoNewPrivs' /proc/self/status
sed -n 's/^CapEff:/its starter:/p' "/proc/$PPID/status"
echo "variables: $(env | grep -vc -E '^(PATH|LC_ALL|PWD|SHLVL|_|OLDPWD)=')"
echo "files:" /proc/self/fd/*
pwd
END
chmod 755 "$0/usermod"
mount --bind "$0/usermod" /usr/sbin/usermod
exec 9</dev/null
cd "$0"
PKEXEC_UID=54321 SECRET=x LD_LIBRARY_PATH=/nonexistent "$3")sh");
    ASSERT_EQ(result.status, 0) << result.output;
    // CHOWN, DAC_OVERRIDE, FOWNER, FSETID and AUDIT_WRITE, less what the tests themselves lack.
    EXPECT_THAT(result.output,
                ContainsRegex("CapBnd:\t000000002000001b|CapBnd:\t000000000000001b"));
    EXPECT_THAT(result.output,
                ContainsRegex("CapPrm:\t000000002000001b|CapPrm:\t000000000000001b"));
    EXPECT_THAT(result.output,
                ContainsRegex("its starter:\t000000002000001b|its starter:\t000000000000001b"));
    EXPECT_THAT(result.output, HasSubstr("CapInh:\t0000000000000000"));
    EXPECT_THAT(result.output, HasSubstr("NoNewPrivs:\t1"));
    EXPECT_THAT(result.output, HasSubstr("variables: 0\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("/proc/self/fd/9")));
    EXPECT_THAT(result.output, HasSubstr("\n/\n"));
}

TEST_F(WholeProgramTest, AGrantIsNotCutShortByTheLimitsOfWhoAskedForIt) {
    const ToolResult result = run(R"sh(cat >"$0/usermod" <<'END'
#!/usr/bin/python3 -I
# A shell begins with no signal blocked, whatever it was started with.
import os
with open("/proc/self/status") as status:
    blocked = [line.split()[1] for line in status if line.startswith("SigBlk")]
print("blocked:", *blocked, flush=True)
os.execv("/bin/sh", ["sh", "-c", """
echo "limits: $(ulimit -f) $(ulimit -t) $(ulimit -v) $(ulimit -d) $(ulimit -c)"
[ "$(ulimit -n)" -ge 1024 ] && echo "files: enough"
echo "mask: $(umask)"
grep SigIgn /proc/self/status
"""])
END
chmod 755 "$0/usermod"
mount --bind "$0/usermod" /usr/sbin/usermod
umask 0077
)sh" + std::string(dataLimit) + R"sh(trap '' HUP INT TERM PIPE
ulimit -Sc 100
ulimit -St 1000
ulimit -Sn 16
ulimit -Sf 100
PKEXEC_UID=54321 env --block-signal=TERM,INT "$3")sh");
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(result.output,
                HasSubstr("limits: unlimited unlimited unlimited unlimited 0\nfiles: enough\n"));
    EXPECT_THAT(result.output, HasSubstr("mask: 0022\n"));
    EXPECT_THAT(result.output, HasSubstr("blocked: 0000000000000000\n"));
    // But for two of the C library's own, which cannot be set, and two that Python ignores.
    EXPECT_THAT(result.output, ContainsRegex("SigIgn:\t0000000[01][08]1001000\n"));
}

TEST_F(WholeProgramTest, AGrantWithClosedStandardStreamsChangesTheRightFiles) {
    const ToolResult result = run(R"sh(PKEXEC_UID=54321 "$3" <&- >&- 2>&-
id -nG spintest
getfacl -cpn /dev/sr0)sh");
    EXPECT_THAT(result.output, HasSubstr("spintest cdrom\n"));
    EXPECT_THAT(result.output, HasSubstr("user:54321:r--\n"));
}

TEST_F(WholeProgramTest, ClosedStandardStreamsAreTheNullDeviceWhileAGrantRuns) {
    const ToolResult result = run(R"sh(cat >"$0/usermod" <<'END'
#!/bin/sh
readlink /proc/$PPID/fd/0 /proc/$PPID/fd/1 /proc/$PPID/fd/2 >/run/streams
END
chmod 755 "$0/usermod"
mount --bind "$0/usermod" /usr/sbin/usermod
PKEXEC_UID=54321 "$3" <&- >&- 2>&-
cat /run/streams)sh");
    EXPECT_EQ(result.output, "/dev/null\n/dev/null\n/dev/null\n");
}

TEST_F(WholeProgramTest, AGrantCoversEveryDriveWhateverGroupTheFirstOneHas) {
    machine.addDrive("sr1", "11:1", 8'388'608);
    const ToolResult result = run(R"sh(mknod -m 660 /dev/sr1 b 11 1
chown 0:"$(getent group cdrom | cut -d: -f3)" /dev/sr1
chown 0:0 /dev/sr0
PKEXEC_UID=54321 "$3"
id -nG spintest
getfacl -cpn /dev/sr0 /dev/sr1 | grep 54321)sh");
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("spintest may read the optical drives; some of them only "
                                         "until they are removed.\n"));
    EXPECT_THAT(result.output, HasSubstr("spintest cdrom\nuser:54321:r--\nuser:54321:r--\n"));
}

TEST_F(WholeProgramTest, WithoutAnOpticalDriveNothingIsGranted) {
    const ToolResult result = run("rm /dev/sr0; PKEXEC_UID=54321 \"$3\"; id -nG spintest");
    EXPECT_THAT(result.output,
                AllOf(HasSubstr("there is no optical drive"), Not(HasSubstr("cdrom"))));
}

}  // namespace
