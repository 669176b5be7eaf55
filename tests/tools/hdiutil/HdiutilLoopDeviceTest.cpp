// The built tools on block devices of the kernel's.
#include "LoopDevice.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "DeviceMedium.h"
#include "ImagingFixture.h"

using testing::HasSubstr;

namespace {

constexpr std::size_t mebibyte = 1024UL * 1024;

class HdiutilLoopDeviceTest : public ImagingFixture {
protected:
    ToolRun::Result createFrom(const std::string& node, const std::string& name,
                               const std::function<void()>& prepare = {}) const {
        return ToolRun::run(
            ToolRun::tool("hdiutil"),
            {"create", "-srcdevice", node, "-format", "UDTO", "-o", folder.path(name)}, {},
            prepare);
    }
};

TEST_F(HdiutilLoopDeviceTest, TheImageIsTheDevice) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const std::string content = patternBytes(3 * mebibyte + 3 * 2048);
    const LoopDevice device(folder.write("disc", content));
    ASSERT_NE(device.node(), "");
    const auto result = createFrom(device.node(), "image");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(image() == content);
}

TEST_F(HdiutilLoopDeviceTest, DevicesWithOtherSectorsAreImagedToTheirLastOne) {
    SKIP_WITHOUT_LOOP_DEVICES();
    for (const unsigned sectorBytes : {512U, 1024U, 4096U}) {
        const std::string content = patternBytes(2 * mebibyte + sectorBytes);
        const LoopDevice device(folder.write("disc", content), sectorBytes);
        ASSERT_NE(device.node(), "");
        const auto result = createFrom(device.node(), "image" + std::to_string(sectorBytes));
        EXPECT_EQ(result.status, 0) << result.err;
        const auto made =
            ScratchFolder::read(folder.path("image" + std::to_string(sectorBytes) + ".cdr"));
        EXPECT_TRUE(made == content) << sectorBytes;
    }
}

TEST_F(HdiutilLoopDeviceTest, AFileThatIsExchangedUnderTheDeviceIsAnotherDisc) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const LoopDevice device(folder.write("disc", patternBytes(mebibyte)));
    const auto opened = DeviceMedium::open(device.node(), nullptr, DiscLayout{});
    ASSERT_TRUE(opened) << opened.failure().sentence;
    const auto& medium = *opened;
    EXPECT_EQ(medium->state(), Medium::State::Same);
    const int node = open(device.node().c_str(), O_RDONLY | O_CLOEXEC);
    const int other =
        open(folder.write("other", patternBytes(mebibyte, 2)).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(ioctl(node, LOOP_CHANGE_FD, other), 0);
    EXPECT_EQ(medium->state(), Medium::State::Changed);
    EXPECT_EQ(medium->confirmedState(), Medium::State::Changed);
    close(other);
    close(node);
}

TEST_F(HdiutilLoopDeviceTest, TheDataOfADiscWithSoundIsReadFromItsOwnSectors) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const std::string content = patternBytes(mebibyte);
    const LoopDevice device(folder.write("disc", content));
    const DiscLayout layout{DiscLayout::Kind::Mixed, 100, 50, 7};
    const auto opened = DeviceMedium::open(device.node(), nullptr, layout);
    ASSERT_TRUE(opened) << opened.failure().sentence;
    const auto& medium = *opened;
    EXPECT_EQ(medium->firstSector(), 100U);
    EXPECT_EQ(medium->capacity(), 50U * 2048);
    EXPECT_EQ(medium->runOutSectors(), 9U);
    EXPECT_EQ(medium->remark(), "the disc in " + device.node() +
                                    " has sound as well; only its data is imaged, 50 sectors from "
                                    "sector 100");
    std::vector<std::byte> buffer(50UL * 2048);
    ASSERT_EQ(medium->read(0, buffer), 0);
    EXPECT_EQ(std::memcmp(buffer.data(), content.data() + 100UL * 2048, buffer.size()), 0);
    buffer.resize(2048);
    ASSERT_EQ(medium->read(49UL * 2048, buffer), 0);
    EXPECT_EQ(std::memcmp(buffer.data(), content.data() + 149UL * 2048, buffer.size()), 0);
}

TEST_F(HdiutilLoopDeviceTest, LessThanWasAskedForIsAnErrorAndNeverASector) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const LoopDevice device(folder.write("disc", patternBytes(mebibyte)));
    const auto opened = DeviceMedium::open(device.node(), nullptr, DiscLayout{});
    ASSERT_TRUE(opened) << opened.failure().sentence;
    const auto& medium = *opened;
    std::vector<std::byte> buffer(4096);
    EXPECT_EQ(medium->read(mebibyte - 4096, buffer), 0);
    EXPECT_EQ(medium->read(mebibyte - 2048, buffer), EIO);
    EXPECT_EQ(medium->read(mebibyte, buffer), EIO);
}

TEST_F(HdiutilLoopDeviceTest, ASecondRunSeesNewBytesThoughTheDeviceIsHeldOpen) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const std::string content = patternBytes(2 * mebibyte);
    const std::string path = folder.write("disc", content);
    const LoopDevice device(path);
    const int held = open(device.node().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(held, 0);
    std::string cached(content.size(), '\0');
    ASSERT_EQ(read(held, cached.data(), cached.size()), static_cast<ssize_t>(cached.size()));
    ASSERT_EQ(createFrom(device.node(), "image").status, 0);
    EXPECT_TRUE(image() == content);

    {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(mebibyte);
        file << patternBytes(2048, 7);
    }
    ASSERT_EQ(createFrom(device.node(), "second").status, 0);
    std::string expected = content;
    expected.replace(mebibyte, 2048, patternBytes(2048, 7));
    EXPECT_TRUE(ScratchFolder::read(folder.path("second.cdr")) == expected);
    close(held);
}

TEST_F(HdiutilLoopDeviceTest, ADeviceThatMayNotBeReadSaysPermissionDenied) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const LoopDevice device(folder.write("disc", patternBytes(8192)));
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    const auto result = createFrom(device.node(), "image", [] {
        if (setgid(65534) != 0 || setuid(65534) != 0) {
            _exit(126);
        }
    });
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "hdiutil: create failed - " + device.node() + ": Permission denied\n");
    EXPECT_FALSE(image());
}

TEST_F(HdiutilLoopDeviceTest, ADeviceWithNothingInItHoldsNoData) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const LoopDevice device(folder.write("disc", {}));
    ASSERT_NE(device.node(), "");
    EXPECT_THAT(createFrom(device.node(), "image").err, HasSubstr("holds no data"));
}

TEST_F(HdiutilLoopDeviceTest, ADeviceThatCannotReadItsEndIsAnErrorThatNamesTheSector) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const std::string content = patternBytes(3 * mebibyte);
    const std::string path = folder.write("disc", content);
    const LoopDevice device(path);
    ASSERT_NE(device.node(), "");
    // What is missing under a loop device is an error to whoever reads it there.
    std::filesystem::resize_file(path, mebibyte + 7UL * 2048);
    const auto result = createFrom(device.node(), "image");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "hdiutil: create failed - sector 519 of " + device.node() +
                              " cannot be read: Input/output error\n");
    EXPECT_TRUE(image() == content.substr(0, mebibyte + 7UL * 2048));
}

TEST_F(HdiutilLoopDeviceTest, ShasumGivesNoDigestOfADeviceThatCannotReadItsEnd) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const std::string path = folder.write("disc", patternBytes(3 * mebibyte));
    const LoopDevice device(path);
    ASSERT_NE(device.node(), "");
    std::filesystem::resize_file(path, mebibyte);
    const auto result = ToolRun::run(ToolRun::tool("shasum"), {"-a", "256", device.node()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "shasum: " + device.node() + ": Input/output error\n");
}

TEST_F(HdiutilLoopDeviceTest, ShasumReadsADeviceAndNotWhatMemoryHoldsOfIt) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const std::string path = folder.write("disc", std::string(4096, 'x'));
    const LoopDevice device(path);
    const int held = open(device.node().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(held, 0);
    std::string cached(4096, '\0');
    ASSERT_EQ(read(held, cached.data(), cached.size()), static_cast<ssize_t>(cached.size()));
    {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file << std::string(4096, '\0');
    }
    const auto result = ToolRun::run(ToolRun::tool("shasum"), {"-a", "256", device.node()});
    EXPECT_THAT(result.out, testing::StartsWith("ad7facb2586fc6e966c004d7d1d16b024f5805ff7cb47c7a85"
                                                "dabd8b48892ca7  "));
    close(held);
}

TEST_F(HdiutilLoopDeviceTest, ShasumDigestsADevice) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const LoopDevice device(folder.write("disc", std::string(4096, '\0')));
    const auto result = ToolRun::run(ToolRun::tool("shasum"), {"-a", "256", device.node()});
    EXPECT_EQ(result.out, "ad7facb2586fc6e966c004d7d1d16b024f5805ff7cb47c7a85dabd8b48892ca7  " +
                              device.node() + "\n");
}

}  // namespace
