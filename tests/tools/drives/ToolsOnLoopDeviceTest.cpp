// The built drutil and diskutil on loop devices of the kernel, which only root can make.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "BuiltTool.h"
#include "ScratchFolder.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ToolsOnLoopDeviceTest : public testing::Test {
protected:
    // Why this machine cannot make loop devices; empty when it can.
    static std::string obstacle() {
        if (geteuid() != 0) {
            return "loop devices need root";
        }
        return access("/dev/loop-control", R_OK | W_OK) == 0 ? "" : "no /dev/loop-control";
    }

    void SetUp() override {
        const std::string reason = obstacle();
        if (reason.empty()) {
            return;
        }
        if (std::getenv("SPINDRIFT_REQUIRE_ALL") != nullptr) {
            FAIL() << reason;
        }
        GTEST_SKIP() << reason;
    }

    void TearDown() override {
        if (!node.empty()) {
            EXPECT_EQ(BuiltTool::run("losetup", {"-d", node}).status, 0);
        }
    }

    void attach(const std::string& image) {
        const ToolResult made =
            BuiltTool::run("losetup", {"-r", "--sector-size", "2048", "-f", "--show", image});
        ASSERT_EQ(made.status, 0) << made.errors;
        node = made.output.substr(0, made.output.find('\n'));
    }
    std::string burn(const std::string& label) {
        folder.write("content/file", "text");
        const std::string image = folder.path("image.iso");
        EXPECT_EQ(BuiltTool::run("xorriso", {"-as", "mkisofs", "-quiet", "-J", "-V", label, "-o",
                                             image, folder.path("content")})
                      .status,
                  0);
        return image;
    }
    ToolResult diskutil(const std::vector<std::string>& arguments) {
        return BuiltTool::run(BuiltTool::diskutil(), arguments);
    }

    ScratchFolder folder;
    std::string node;
};

TEST_F(ToolsOnLoopDeviceTest, ADeviceIsDescribedLikeADisc) {
    const std::string image = burn("My Loop Disc");
    ASSERT_NO_FATAL_FAILURE(attach(image));
    const std::string bytes = std::to_string(std::filesystem::file_size(image));
    const ToolResult info = diskutil({"info", "-plist", node});
    EXPECT_EQ(info.status, 0) << info.errors;
    EXPECT_THAT(info.output, HasSubstr("<string>My Loop Disc</string>"));
    EXPECT_THAT(info.output, HasSubstr("<key>TotalSize</key>\n\t<integer>" + bytes));
    EXPECT_THAT(diskutil({"list", node}).output, EndsWith(" " + node.substr(5) + "\n"));
}

TEST_F(ToolsOnLoopDeviceTest, ItCanBeChosenAsTheDrive) {
    ASSERT_NO_FATAL_FAILURE(attach(burn("X")));
    const ToolResult status =
        BuiltTool::run(BuiltTool::drutil(), {"status"}, {{"SPINDRIFT_DRIVE", node.substr(5)}});
    EXPECT_EQ(status.status, 0);
    EXPECT_THAT(status.output, EndsWith("Name: " + node + "\n"));
}

TEST_F(ToolsOnLoopDeviceTest, EjectingItFailsWithAClearText) {
    ASSERT_NO_FATAL_FAILURE(attach(burn("X")));
    const ToolResult eject = diskutil({"eject", node});
    EXPECT_EQ(eject.status, 1);
    EXPECT_EQ(eject.errors, "diskutil: " + node + " is not an optical drive.\n");
}

TEST_F(ToolsOnLoopDeviceTest, ADeviceWithNothingInItHoldsNoDisc) {
    ASSERT_NO_FATAL_FAILURE(attach(folder.write("empty", "")));
    const ToolResult info = diskutil({"info", "-plist", node});
    EXPECT_EQ(info.status, 1);
    EXPECT_EQ(info.errors, "diskutil: There is no disc in " + node + "\n");
    EXPECT_EQ(info.output, "");
}

}  // namespace
