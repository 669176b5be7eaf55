#include "ImageFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstring>
#include <filesystem>

#include "BufferRing.h"
#include "CachedPages.h"
#include "DescriptorHolder.h"
#include "ScratchFolder.h"

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;

namespace {

constexpr std::size_t mebibyte = 1024UL * 1024;

// Appends the content in pieces of the ring's size, from an aligned buffer as the copier does.
int appendAll(ImageFile& image, const std::string& content, std::size_t piece = mebibyte) {
    BufferRing ring(1, mebibyte);
    const auto buffer = ring.acquire();
    for (std::size_t at = 0; at < content.size(); at += piece) {
        const std::size_t bytes = std::min(piece, content.size() - at);
        std::memcpy(buffer.data(), content.data() + at, bytes);
        if (const int error = image.append(buffer.first(bytes))) {
            return error;
        }
    }
    return 0;
}

class ImageFileTest : public testing::TestWithParam<ImageFile::Caching> {
protected:
    std::unique_ptr<ImageFile> create() {
        auto image = ImageFile::create(m_folder.path("image"), GetParam());
        m_failure = image ? Failure() : image.failure();
        return image ? std::move(*image) : nullptr;
    }

    ScratchFolder m_folder;
    Failure m_failure;
};

INSTANTIATE_TEST_SUITE_P(AvoidingTheCacheAndInWindows, ImageFileTest,
                         testing::Values(ImageFile::Caching::Avoid, ImageFile::Caching::Windows),
                         [](const auto& test) {
                             return test.param == ImageFile::Caching::Avoid ? "Avoid" : "Windows";
                         });

TEST_P(ImageFileTest, NobodyElseMayReadAnImageThatHasNoPlaceYet) {
    const auto image = create();
    ASSERT_TRUE(image) << m_failure.sentence;
    struct stat status {};
    ASSERT_EQ(stat(m_folder.path("image").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_P(ImageFileTest, AnImageIsLockedForAsLongAsItIsWritten) {
    auto image = create();
    ASSERT_TRUE(image) << m_failure.sentence;
    const DescriptorHolder other(open(m_folder.path("image").c_str(), O_RDWR | O_CLOEXEC));
    const auto isLocked = [&other] {
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        EXPECT_EQ(fcntl(other.get(), F_OFD_GETLK, &lock), 0);
        return lock.l_type != F_UNLCK;
    };
    EXPECT_TRUE(isLocked());
    image.reset();
    EXPECT_FALSE(isLocked());
}

TEST_P(ImageFileTest, WhatIsAppendedIsInTheFileAtEverySize) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{511}, std::size_t{2048}, std::size_t{4096},
          std::size_t{6144}, mebibyte - 1, mebibyte, 3 * mebibyte + 2048, 20 * mebibyte}) {
        const auto image = create();
        ASSERT_TRUE(image) << m_failure.sentence;
        const std::string content = patternBytes(size);
        EXPECT_TRUE(image->reserve(size));
        EXPECT_EQ(appendAll(*image, content), 0);
        EXPECT_EQ(image->finish(), 0);
        EXPECT_TRUE(ScratchFolder::read(m_folder.path("image")) == content) << size;
        image->remove();
    }
}

TEST_P(ImageFileTest, PiecesOffTheAlignmentAreWrittenToo) {
    const auto image = create();
    ASSERT_TRUE(image);
    const std::string content = patternBytes(3 * mebibyte);
    EXPECT_EQ(appendAll(*image, content, 1000 * 512), 0);
    EXPECT_EQ(appendAll(*image, content, 4096), 0);
    EXPECT_EQ(image->finish(), 0);
    EXPECT_TRUE(ScratchFolder::read(m_folder.path("image")) == content + content);
}

TEST_P(ImageFileTest, AnExistingFileIsNeverTouched) {
    m_folder.write("image", "precious");
    EXPECT_FALSE(create());
    EXPECT_EQ(m_failure.sentence, m_folder.path("image") + ": File exists");
    EXPECT_EQ(ScratchFolder::read(m_folder.path("image")), "precious");
}

TEST_P(ImageFileTest, ALinkThatPointsNowhereIsNotFollowed) {
    std::filesystem::create_symlink(m_folder.path("target"), m_folder.path("image"));
    EXPECT_FALSE(create());
    EXPECT_EQ(m_failure.sentence, m_folder.path("image") + ": File exists");
    EXPECT_FALSE(std::filesystem::exists(m_folder.path("target")));
}

TEST_P(ImageFileTest, AMissingFolderIsTheErrorItIs) {
    const auto image = ImageFile::create(m_folder.path("none/image"), GetParam());
    ASSERT_FALSE(image);
    EXPECT_EQ(image.failure().sentence, "the folder " + m_folder.path("none") + " does not exist");
}

TEST_P(ImageFileTest, WhatIsReservedDoesNotShowInTheSizeAndIsGivenBack) {
    const auto image = create();
    ASSERT_TRUE(image);
    ASSERT_TRUE(image->reserve(64 * mebibyte));
    ASSERT_EQ(appendAll(*image, patternBytes(2 * mebibyte)), 0);
    const auto status = [this] {
        struct stat result {};
        stat(m_folder.path("image").c_str(), &result);
        return result;
    };
    EXPECT_EQ(status().st_size, static_cast<off_t>(2 * mebibyte));
    EXPECT_GE(status().st_blocks * 512, static_cast<off_t>(64 * mebibyte));
    image->keepPartial();
    EXPECT_EQ(status().st_size, static_cast<off_t>(2 * mebibyte));
    EXPECT_LT(status().st_blocks * 512, static_cast<off_t>(4 * mebibyte));
}

TEST_P(ImageFileTest, ADiskThatIsTooSmallFailsAtOnce) {
    const auto image = create();
    ASSERT_TRUE(image);
    const auto reserved = image->reserve(std::uint64_t{1} << 50);
    ASSERT_FALSE(reserved);
    EXPECT_THAT(reserved.failure().sentence,
                AllOf(AnyOf(HasSubstr(": No space left"), HasSubstr(": File too large")),
                      HasSubstr("; the image needs 1125899906842624 bytes")));
}

TEST_P(ImageFileTest, AFileThatMayNotGrowAnyMoreIsAnError) {
    std::signal(SIGXFSZ, SIG_IGN);
    const auto image = create();
    ASSERT_TRUE(image);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{3 * mebibyte + 100, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(appendAll(*image, patternBytes(5 * mebibyte)), EFBIG);
    setrlimit(RLIMIT_FSIZE, &before);
}

TEST_P(ImageFileTest, LittleOfItStaysInMemory) {
    const auto image = create();
    ASSERT_TRUE(image);
    ASSERT_EQ(appendAll(*image, patternBytes(48 * mebibyte)), 0);
    const auto cached = cachedBytes(m_folder.path("image"));
    ASSERT_TRUE(cached);
    EXPECT_LE(*cached, 24 * mebibyte);
    ASSERT_EQ(image->finish(), 0);
    EXPECT_LE(cachedBytes(m_folder.path("image")).value_or(~std::size_t{0}), mebibyte);
}

}  // namespace
