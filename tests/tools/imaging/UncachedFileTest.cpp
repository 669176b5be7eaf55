#include "UncachedFile.h"

#include <gmock/gmock.h>

#include "CachedPages.h"
#include "ReadAhead.h"
#include "ScratchFolder.h"

namespace {

constexpr std::size_t mebibyte = 1024UL * 1024;

std::string readAhead(const std::string& path) {
    ReadAhead file(UncachedFile::open(path));
    std::string content;
    for (auto bytes = file.next(); !bytes.empty(); bytes = file.next()) {
        content.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    EXPECT_EQ(file.error(), 0);
    return content;
}

// In the folder on a disk, and where uncached reading may be refused.
class UncachedFileTest : public testing::TestWithParam<const char*> {
protected:
    UncachedFileTest() {
        const char* before = std::getenv("TMPDIR");
        const std::string saved = before != nullptr ? before : "";
        if (*GetParam() != '\0') {
            setenv("TMPDIR", GetParam(), 1);
        }
        m_folder.emplace();
        before != nullptr ? setenv("TMPDIR", saved.c_str(), 1) : unsetenv("TMPDIR");
    }

    std::optional<ScratchFolder> m_folder;
};

INSTANTIATE_TEST_SUITE_P(OnDiskAndInMemory, UncachedFileTest, testing::Values("", "/dev/shm"),
                         [](const auto& test) {
                             return *test.param == '\0' ? "OnDisk" : "InMemory";
                         });

TEST_P(UncachedFileTest, AnyPieceOfTheFileCanBeRead) {
    const std::string content = patternBytes(mebibyte + 1234);
    const auto file = UncachedFile::open(m_folder->write("file", content));
    ASSERT_TRUE(file);
    const struct {
        std::size_t offset;
        std::size_t length;
    } pieces[] = {{0, 1},        {0, 4096},         {1, 1},         {2048, 2048},
                  {6144, 4096},  {4095, 2},         {2352, 2352},   {mebibyte, 1234},
                  {0, mebibyte}, {mebibyte - 1, 2}, {512, 100'000}, {mebibyte + 1233, 1}};
    for (const auto& [offset, length] : pieces) {
        std::vector<std::byte> buffer(length);
        std::size_t bytes = 0;
        ASSERT_EQ(file->read(offset, buffer, &bytes), 0);
        ASSERT_EQ(bytes, length);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.data()), bytes),
                  content.substr(offset, length))
            << offset;
    }
}

TEST_P(UncachedFileTest, ThereIsLessAtTheEndAndNothingBeyondIt) {
    const std::string content = patternBytes(5000);
    const auto file = UncachedFile::open(m_folder->write("file", content));
    ASSERT_TRUE(file);
    for (const std::size_t offset :
         {0UL, 4096UL, 4100UL, 4999UL, 5000UL, 5001UL, 8192UL, 100'000UL}) {
        std::vector<std::byte> buffer(8192);
        std::size_t bytes = 0;
        ASSERT_EQ(file->read(offset, buffer, &bytes), 0);
        EXPECT_EQ(bytes, offset < 5000 ? 5000 - offset : 0) << offset;
    }
}

TEST_P(UncachedFileTest, AWholeFileIsReadAheadAtEverySize) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4096}, mebibyte - 1,
                                   mebibyte, mebibyte + 1, 9 * mebibyte + 7}) {
        const std::string content = patternBytes(size);
        EXPECT_TRUE(readAhead(m_folder->write("file", content)) == content) << size;
    }
}

TEST_P(UncachedFileTest, ReadingAheadMayEndEarly) {
    ReadAhead file(UncachedFile::open(m_folder->write("file", patternBytes(20 * mebibyte))));
    EXPECT_EQ(file.next().size(), mebibyte);
}

TEST(UncachedFileOnDiskTest, ReadingLeavesNothingInMemory) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", patternBytes(32 * mebibyte));
    dropCache(path);
    readAhead(path);
    EXPECT_LE(cachedBytes(path).value_or(~std::size_t{0}), mebibyte);
}

TEST(UncachedFileOnDiskTest, AFileThatIsNotThereIsTheErrorItIs) {
    const ScratchFolder folder;
    EXPECT_FALSE(UncachedFile::open(folder.path("none")));
    EXPECT_EQ(errno, ENOENT);
}

}  // namespace
