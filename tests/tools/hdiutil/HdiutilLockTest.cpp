// The built hdiutil beside another one on the same drive.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>

#include <csignal>

#include "DescriptorHolder.h"
#include "ImagingFixture.h"
#include "LoopDevice.h"

using testing::ElementsAre;
using testing::MatchesRegex;

namespace {

constexpr std::size_t mebibyte = 1024UL * 1024;

class HdiutilLockTest : public ImagingFixture {
protected:
    ToolRun::Result createFrom(const LoopDevice& device) const {
        return ToolRun::run(
            ToolRun::tool("hdiutil"),
            {"create", "-srcdevice", device.node(), "-format", "UDTO", "-o", folder.path("image")});
    }
};

TEST_F(HdiutilLockTest, ADiscThatIsReadIsReadByNobodyElse) {
    const std::string disc = insert(patternBytes(4 * mebibyte));
    drive(R"({"faults": [{"lba": 600, "kind": "hang", "seconds": 86400}]})");
    auto first = start("first", {"-puppetstrings"});
    ASSERT_TRUE(readUntilItCopies(*first));
    const auto second = create("second");
    EXPECT_EQ(second.status, 75);
    EXPECT_THAT(second.err, MatchesRegex("hdiutil: create failed - /dev/practice0 is busy: "
                                         "hdiutil \\(pid [0-9]+\\) reads it\n"));
    EXPECT_THAT(images(), ElementsAre("first.cdr"));

    first->signal(SIGTERM);
    first->wait();
    drive("{}");
    EXPECT_EQ(create("image").status, 0);
    EXPECT_TRUE(image() == disc);
}

TEST_F(HdiutilLockTest, ADeviceThatAProgramReadsIsReadByNobodyElse) {
    SKIP_WITHOUT_LOOP_DEVICES();
    const std::string disc = patternBytes(mebibyte);
    const LoopDevice device(folder.write("disc", disc));
    ASSERT_NE(device.node(), "");
    {
        const DescriptorHolder reader(open(device.node().c_str(), O_RDONLY | O_CLOEXEC));
        ASSERT_EQ(flock(reader.get(), LOCK_SH), 0);
        EXPECT_EQ(createFrom(device).err, "hdiutil: create failed - " + device.node() +
                                              " is busy: another program reads it\n");
        EXPECT_THAT(images(), testing::IsEmpty());
    }
    EXPECT_EQ(createFrom(device).status, 0);
    EXPECT_TRUE(image() == disc);
}

}  // namespace
