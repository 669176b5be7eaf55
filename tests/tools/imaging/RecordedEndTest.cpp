#include "RecordedEnd.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <filesystem>

#include "ScratchFolder.h"
#include "Skipping.h"
#include "ToolRun.h"

namespace {

constexpr std::size_t sectorBytes = 2048;

// A disc in memory, made of the few sectors that matter.
class RecordedEndTest : public testing::Test {
protected:
    std::string& sector(std::uint64_t number) {
        auto& content = m_sectors[number];
        content.resize(sectorBytes, '\0');
        return content;
    }

    static void put(std::string& content, std::size_t at, std::uint64_t value, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes; ++i) {
            content[at + i] = static_cast<char>(value >> (8 * i) & 0xff);
        }
    }

    void addIso(std::uint64_t blocks, std::uint64_t blockBytes = 2048, std::uint64_t at = 16) {
        auto& content = sector(at);
        content[0] = 1;
        content.replace(1, 5, "CD001");
        put(content, 80, blocks, 4);
        put(content, 128, blockBytes, 2);
    }

    static void seal(std::string& content) {
        unsigned sum = 0;
        for (std::size_t i = 0; i < 16; ++i) {
            sum += i == 4 ? 0U : static_cast<unsigned char>(content[i]);
        }
        content[4] = static_cast<char>(sum & 0xff);
    }

    void addAnchor(std::uint64_t at, std::uint64_t sequence) {
        auto& content = sector(at);
        put(content, 0, 2, 2);
        put(content, 16, 16 * sectorBytes, 4);
        put(content, 20, sequence, 4);
        put(content, 24, 16 * sectorBytes, 4);
        put(content, 28, sequence + 16, 4);
        seal(content);
    }

    void addPartition(std::uint64_t at, std::uint64_t start, std::uint64_t length) {
        auto& content = sector(at);
        put(content, 0, 5, 2);
        put(content, 188, start, 4);
        put(content, 192, length, 4);
        seal(content);
    }

    void addTerminator(std::uint64_t at) {
        put(sector(at), 0, 8, 2);
        seal(sector(at));
    }

    std::optional<std::uint64_t> end() const {
        return recordedEnd(
            [this](std::uint64_t at, std::span<std::byte> buffer) {
                const auto found = m_sectors.find(at);
                if (at >= capacity || at == unreadable) {
                    return false;
                }
                if (found == m_sectors.end()) {
                    std::memset(buffer.data(), 0, buffer.size());
                } else {
                    std::memcpy(buffer.data(), found->second.data(), buffer.size());
                }
                return true;
            },
            capacity);
    }

    std::uint64_t capacity = 10'000;
    std::uint64_t unreadable = ~std::uint64_t{0};

private:
    std::map<std::uint64_t, std::string> m_sectors;
};

TEST_F(RecordedEndTest, ADiscWithoutAFileSystemHasNoKnownEnd) {
    EXPECT_FALSE(end());
}

TEST_F(RecordedEndTest, AnIsoFileSystemEndsWhereItsVolumeDoes) {
    addIso(5000);
    EXPECT_EQ(end(), 5000U);
}

TEST_F(RecordedEndTest, SmallerBlocksAreCountedInSectors) {
    addIso(4 * 5000 - 1, 512);
    EXPECT_EQ(end(), 5000U);
}

TEST_F(RecordedEndTest, ThePrimaryDescriptorNeedNotBeTheFirst) {
    auto& boot = sector(16);
    boot.replace(1, 5, "CD001");
    addIso(5000, 2048, 17);
    EXPECT_EQ(end(), 5000U);
}

TEST_F(RecordedEndTest, ADescriptorThatMakesNoSenseIsNoFileSystem) {
    addIso(5000, 7);
    EXPECT_FALSE(end());
    addIso(0);
    EXPECT_FALSE(end());
    sector(16)[0] = static_cast<char>(0xff);
    EXPECT_FALSE(end());
}

TEST_F(RecordedEndTest, ADescriptorThatCannotBeReadIsNoFileSystem) {
    addIso(5000);
    unreadable = 16;
    EXPECT_FALSE(end());
}

TEST_F(RecordedEndTest, AUdfFileSystemEndsWhereItsPartitionDoes) {
    addAnchor(256, 32);
    addPartition(34, 300, 6000);
    addTerminator(36);
    EXPECT_EQ(end(), 6300U);
}

TEST_F(RecordedEndTest, TheSecondAnchorIsUsedWhenTheFirstIsMissing) {
    for (const std::uint64_t back : {1UL, 257UL}) {
        sector(capacity - back).clear();
        addAnchor(capacity - back, 32);
        addPartition(34, 300, 6000);
        EXPECT_EQ(end(), 6300U);
        sector(capacity - back).clear();
    }
}

TEST_F(RecordedEndTest, TheReserveSequenceIsUsedWhenTheMainOneCannotBeRead) {
    addAnchor(256, 32);
    addPartition(48, 300, 6000);
    unreadable = 32;
    EXPECT_EQ(end(), 6300U);
}

TEST_F(RecordedEndTest, AWrongChecksumIsNoDescriptor) {
    addAnchor(256, 32);
    addPartition(34, 300, 6000);
    sector(34)[4] = static_cast<char>(sector(34)[4] + 1);
    EXPECT_FALSE(end());
}

TEST_F(RecordedEndTest, ABridgeDiscEndsWithTheLargerOfItsTwoFileSystems) {
    addIso(7000);
    addAnchor(256, 32);
    addPartition(34, 300, 6000);
    EXPECT_EQ(end(), 7000U);
    addIso(2000);
    EXPECT_EQ(end(), 6300U);
}

TEST_F(RecordedEndTest, APartitionTableOfAHybridImageCounts) {
    addIso(5000);
    auto& table = sector(0);
    table[510] = 0x55;
    table[511] = static_cast<char>(0xaa);
    table[446 + 4] = 0x17;
    put(table, 446 + 8, 4, 4);
    put(table, 446 + 12, 4 * 6000 - 3, 4);
    EXPECT_EQ(end(), 6001U);
    table[446 + 4] = static_cast<char>(0xee);
    EXPECT_EQ(end(), 5000U);
    table.replace(512, 8, "EFI PART");
    put(table, 512 + 32, 4 * 6500 - 1, 8);
    EXPECT_EQ(end(), 6500U);
}

TEST_F(RecordedEndTest, TheLargestNumbersThatADescriptorCanHoldAreHarmless) {
    addIso(0xffffffff);
    addAnchor(256, 0xfffffff0);
    addPartition(34, 0xffffffff, 0xffffffff);
    auto& table = sector(0);
    table[510] = 0x55;
    table[511] = static_cast<char>(0xaa);
    table.replace(512, 8, "EFI PART");
    put(table, 512 + 32, ~std::uint64_t{0}, 8);
    EXPECT_GE(end().value_or(0), 0xffffffffU);
    for (const std::uint64_t small : {0UL, 1UL, 16UL, 17UL, 256UL, 257UL, 258UL}) {
        capacity = small;
        EXPECT_EQ(end().has_value(), small > 16);
    }
}

// Images that other programs make, when those are here.
std::optional<std::uint64_t> endOfFile(const std::string& path, std::uint64_t* capacity) {
    const std::string image = ScratchFolder::read(path).value();
    *capacity = image.size() / sectorBytes;
    return recordedEnd(
        [&image](std::uint64_t at, std::span<std::byte> buffer) {
            if ((at + 1) * sectorBytes > image.size()) {
                return false;
            }
            std::memcpy(buffer.data(), image.data() + at * sectorBytes, buffer.size());
            return true;
        },
        *capacity);
}

TEST(RecordedEndOfImagesTest, AnImageThatXorrisoMadeEndsWithinItself) {
    const ScratchFolder folder;
    folder.write("content/file", patternBytes(300'000));
    const auto made = ToolRun::run(
        "/usr/bin/xorriso",
        {"-as", "mkisofs", "-quiet", "-o", folder.path("disc"), folder.path("content")});
    if (made.status == 127) {
        SKIP_BECAUSE("xorriso is not installed");
    }
    ASSERT_EQ(made.status, 0) << made.err;
    std::uint64_t capacity = 0;
    const auto end = endOfFile(folder.path("disc"), &capacity);
    ASSERT_TRUE(end);
    EXPECT_LE(*end, capacity);
    EXPECT_GT(*end, 150U);
}

TEST(RecordedEndOfImagesTest, AUdfImageEndsWithinItself) {
    const ScratchFolder folder;
    folder.write("disc", {});
    std::filesystem::resize_file(folder.path("disc"), 4000 * sectorBytes);
    const auto made =
        ToolRun::run("/usr/sbin/mkudffs", {"--media-type=cdr", "-b", "2048", folder.path("disc")});
    const auto again = made.status == 0
                           ? made
                           : ToolRun::run("/usr/sbin/mkudffs",
                                          {"--media-type=hd", "-b", "2048", folder.path("disc")});
    if (again.status == 127) {
        SKIP_BECAUSE("mkudffs is not installed");
    }
    ASSERT_EQ(again.status, 0) << again.err;
    std::uint64_t capacity = 0;
    const auto end = endOfFile(folder.path("disc"), &capacity);
    ASSERT_TRUE(end);
    EXPECT_LE(*end, capacity);
    EXPECT_GT(*end, 3000U);
}

}  // namespace
