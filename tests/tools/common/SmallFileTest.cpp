// Whole files read, whole texts written.
#include "SmallFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <thread>

#include "DescriptorHolder.h"
#include "ScratchFolder.h"

namespace {

TEST(SmallFileTest, AFullPipeThatWouldNotBlockIsWaitedFor) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const DescriptorHolder reading(ends[0]);
    const std::string text = patternBytes(1024UL * 1024);
    std::string got;
    std::thread reader([&reading, &got] {
        std::array<char, 65536> buffer;
        for (ssize_t count = 1; count > 0;) {
            count = read(reading.get(), buffer.data(), buffer.size());
            got.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
    });
    int error = -1;
    {
        const DescriptorHolder writing(ends[1]);
        fcntl(writing.get(), F_SETFL, O_NONBLOCK);
        error = SmallFile::writeAll(writing.get(), text);
    }
    reader.join();
    EXPECT_EQ(error, 0);
    EXPECT_TRUE(got == text);
}

TEST(SmallFileTest, AFullDiskIsTheErrorItIs) {
    const DescriptorHolder full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    ASSERT_TRUE(full.isOpen());
    EXPECT_EQ(SmallFile::writeAll(full.get(), "text"), ENOSPC);
}

TEST(SmallFileTest, AFileThatCannotBeReadLeavesItsReasonInErrno) {
    const ScratchFolder folder;
    EXPECT_EQ(SmallFile::read(folder.write("file", "content\n")), "content\n");
    EXPECT_EQ(SmallFile::read(folder.path("none")), std::nullopt);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(SmallFile::read(folder.path()), std::nullopt);
    EXPECT_EQ(errno, EISDIR);
}

TEST(DescriptorHolderTest, ClosingLeavesErrnoAsItWas) {
    errno = ENOSPC;
    { const DescriptorHolder closedAlready(1'000'000); }
    EXPECT_EQ(errno, ENOSPC);
}

}  // namespace
