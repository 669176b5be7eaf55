// The built program with an image that is larger than 32 bits can count.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cstring>
#include <memory>

#include "CliProgram.h"

namespace {

constexpr qint64 size = 4LL << 30;

class LargeImageProgramTest : public testing::Test {
protected:
    LargeImageProgramTest() { CliTest::useRealTools(folder); }

    // A sparse file with a few bytes at its ends and around the limits of 31 and 32 bits.
    QString sparseImage() const {
        const QString path = folder.write(QStringLiteral("big.iso"), QByteArray());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(size));
        for (const qint64 place :
             {qint64(0), (1LL << 31) - 5, (1LL << 32) - 2048 - 3, size - 8, size / 3}) {
            EXPECT_TRUE(file.seek(place));
            EXPECT_EQ(file.write("12345678"), 8);
        }
        return path;
    }

    TestFolder folder;
};

// cmp's work, in pieces that do not fill the memory.
bool areSame(const QString& first, const QString& second) {
    QFile one(first);
    QFile two(second);
    if (!one.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        !two.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || one.size() != two.size()) {
        return false;
    }
    constexpr qint64 piece = 4 << 20;
    const auto left = std::make_unique<char[]>(piece);
    const auto right = std::make_unique<char[]>(piece);
    for (qint64 done = 0; done < one.size();) {
        const qint64 count = one.read(left.get(), piece);
        if (count <= 0 || two.read(right.get(), piece) != count ||
            std::memcmp(left.get(), right.get(), static_cast<size_t>(count)) != 0) {
            return false;
        }
        ::posix_fadvise(one.handle(), done, count, POSIX_FADV_DONTNEED);
        ::posix_fadvise(two.handle(), done, count, POSIX_FADV_DONTNEED);
        done += count;
    }
    return true;
}

TEST_F(LargeImageProgramTest, FourGibibytesAreCopiedByteForByte) {
    const QString image = sparseImage();
    const QString target = folder.path("out.iso");
    CliProgram program({"rip", "--json", "--practice", image, "--output", target});
    EXPECT_EQ(program.exitStatus(), 0) << program.errors().toStdString();
    EXPECT_EQ(program.lastValue("bytesWritten"), size);
    EXPECT_TRUE(areSame(image, target));
}

}  // namespace
