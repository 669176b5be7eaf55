// What failed rips have left: listed, removed, left alone.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QFile>

#include "CliProgram.h"
#include "TestFolder.h"

namespace {

using testing::HasSubstr;

class LeftImagesProgramTest : public testing::Test {
protected:
    // An image that a rip has left, with this volume name if any.
    QString leave(const QByteArray& identifier, const QByteArray& volumeName = {}) {
        QByteArray image(20 * 2048, '\0');
        if (!volumeName.isEmpty()) {
            image.replace(16 * 2048, 6,
                          "\x01"
                          "CD001");
            image.replace(16 * 2048 + 40, 32, volumeName.leftJustified(32, ' '));
        }
        return folder.write(QStringLiteral("tmp/spindrift-") + QString::fromLatin1(identifier) +
                                QStringLiteral("-0000-4000-8000-000000000000.cdr"),
                            image);
    }
    static void setTime(const QString& path, time_t seconds) {
        const timespec times[2] = {{seconds, 0}, {seconds, 0}};
        EXPECT_EQ(utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
    }

    TestFolder folder;
};

TEST_F(LeftImagesProgramTest, EachIsALineWithDateSizeDiscAndFile) {
    folder.setEnvironment("TZ", "UTC");
    const QString newer = leave("00000001", "HOLIDAY 2019");
    const QString older = leave("00000002");
    setTime(newer, 1700000000);
    setTime(older, 1600000000);
    CliProgram program({"leftovers"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.output().toStdString(), "2023-11-14 22:13      41 KB  HOLIDAY 2019  " +
                                                  newer.toStdString() +
                                                  "\n"
                                                  "2020-09-13 12:26      41 KB  (no name)  " +
                                                  older.toStdString() + "\n");
    EXPECT_EQ(program.errors(), "");
    EXPECT_TRUE(QFile::exists(newer) && QFile::exists(older));
}

TEST_F(LeftImagesProgramTest, WithJsonEachIsAnObject) {
    const QString path = leave("00000001", "HOLIDAY 2019");
    setTime(path, 1700000000);
    CliProgram program({"leftovers", "--json"});
    EXPECT_EQ(program.exitStatus(), 0);
    const auto lines = program.jsonLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines.front().dump(), "{\"path\":\"" + path.toStdString() +
                                        "\",\"bytes\":40960,\"lastChanged\":\"2023-11-14T22:13:20Z"
                                        "\",\"volumeName\":\"HOLIDAY 2019\"}");
}

TEST_F(LeftImagesProgramTest, ANameThatIsNoLineIsOne) {
    leave("00000001",
          "A\nB\tC\x7f\x1b[31mD\xe2\x80\xae"
          "E");
    CliProgram program({"leftovers"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(program.output().toStdString(), HasSubstr("  A B C [31mD E  "));
}

TEST_F(LeftImagesProgramTest, TheyAreRemovedAfterTheyHaveBeenNamed) {
    const QString path = leave("00000001");
    CliProgram program({"leftovers", "--remove"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_THAT(program.output().toStdString(), HasSubstr(path.toStdString()));
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(LeftImagesProgramTest, WhatARunningRipNeedsIsNeitherListedNorRemoved) {
    const QString path = leave("00000001");
    QFile writer(path);
    ASSERT_TRUE(writer.open(QIODevice::ReadWrite));
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    ASSERT_EQ(fcntl(writer.handle(), F_OFD_SETLK, &lock), 0);
    CliProgram program({"leftovers", "--remove"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_EQ(program.output(),
              "No failed rip has left anything in “" + folder.temporary().toUtf8() + "”.\n");
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(LeftImagesProgramTest, AnotherFolderCanBeAskedFor) {
    const QString path = leave("00000001");
    folder.setEnvironment("TMPDIR", folder.path(QStringLiteral("home")).toUtf8());
    CliProgram program({"leftovers", "--remove", folder.path(QStringLiteral("tmp"))});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(LeftImagesProgramTest, AFolderThatDoesNotExistIsAFailure) {
    const QString none = folder.path(QStringLiteral("none"));
    CliProgram program({"leftovers", none});
    EXPECT_EQ(program.exitStatus(), 1);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(),
              "spindrift-cli: The folder “" + none.toUtf8() + "” does not exist.\n");
}

TEST_F(LeftImagesProgramTest, WithoutAReaderNothingIsRemoved) {
    const QString path = leave("00000001");
    QProcess program;
    program.setStandardOutputFile(QStringLiteral("/dev/full"));
    program.start(QStringLiteral(SPINDRIFT_CLI), {"leftovers", "--remove"});
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), 1);
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(LeftImagesProgramTest, AnyCommandClearsAwayWhatAnEndedVerificationLeftLongAgo) {
    const QString verification = folder.write(
        "tmp/spindrift-verify-00000001-0000-4000-8000-000000000000.cdr", "half a disc");
    const QString rip = leave("00000002");
    setTime(verification, 1700000000);
    setTime(rip, 1700000000);
    CliProgram program({"history"});
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_FALSE(QFile::exists(verification));
    EXPECT_TRUE(QFile::exists(rip));
}

}  // namespace
