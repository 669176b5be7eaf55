// What is asked of diskutil, and what is made of its answers.
#include <gmock/gmock.h>

#include "DriveStatus.h"
#include "StubTools.h"
#include "TestFolder.h"

namespace {

using DriveStatus::Audio;
using DriveStatus::parseFirstVolume;
using DriveStatus::parseImageSource;
using DriveStatus::parseTotalBytes;
using DriveStatus::parseVolumeName;
using testing::ElementsAre;
using testing::IsEmpty;

using StubTools::diskutil;
const QString disk4 = QStringLiteral("disk4");

QByteArray document(const QByteArray& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries +
           "</dict></plist>\n";
}

QString list(const char* entries) {
    return QString::fromUtf8(document(entries));
}

constexpr const char* listing =
    "/dev/disk4 (external, physical):\n"
    "   #:                       TYPE NAME                    SIZE       IDENTIFIER\n"
    "   0:        CD_partition_scheme                        *681.6 MB   disk4\n"
    "   1:           Apple_HFS MY DISC                       600.0 MB   disk4s1\n"
    "   2:           Apple_HFS OTHER                          81.6 MB   disk4s2\n"
    "\n";

std::optional<QString> source(const char* text) {
    return parseImageSource(QString::fromUtf8(text), disk4);
}

class DiskutilQueryTest : public testing::Test {
protected:
    // A diskutil with an answer, as shell commands, to each of its three uses.
    void answer(const QByteArray& info, const QByteArray& volumes = "exit 1",
                const QByteArray& rows = "exit 1") const {
        StubTools::write(folder, diskutil,
                         "case \"$1 $2\" in\n'info -plist')\n" + info + "\n;;\n'list -plist')\n" +
                             volumes + "\n;;\nlist*)\n" + rows + "\n;;\n*) exit 64;;\nesac");
    }

    static QByteArray print(const QByteArray& text) { return "cat <<'END'\n" + text + "\nEND"; }

    QStringList log() const { return StubTools::log(folder); }

    TestFolder folder;
};

constexpr const char* infoLine = "diskutil info -plist /dev/disk4";
constexpr const char* volumesLine = "diskutil list -plist /dev/disk4";
constexpr const char* rowsLine = "diskutil list /dev/disk4";

TEST(ParseVolumeNameTest, TheNameIsATextThatIsNotEmpty) {
    EXPECT_EQ(parseVolumeName(list("<key>VolumeName</key><string>MY DISC</string>")),
              QStringLiteral("MY DISC"));
    EXPECT_EQ(parseVolumeName(list("<key>VolumeName</key><string> </string>")),
              QStringLiteral(" "));
}

TEST(ParseVolumeNameTest, EverythingElseIsNoName) {
    for (const char* entries :
         {"", "<key>VolumeName</key><string/>", "<key>VolumeName</key><integer>1</integer>",
          "<key>VolumeName</key><array><string>a</string></array>",
          "<key>volumename</key><string>a</string>",
          "<key>D</key><dict><key>VolumeName</key><string>a</string></dict>"}) {
        EXPECT_EQ(parseVolumeName(list(entries)), std::nullopt) << entries;
    }
    EXPECT_EQ(parseVolumeName(QString()), std::nullopt);
    EXPECT_EQ(parseVolumeName(QStringLiteral("garbage")), std::nullopt);
}

TEST(ParseVolumeNameTest, NamesOfEveryScriptAreKeptToTheCharacter) {
    for (const char* name : {"E\u0301T\u00c9", "\u65e5\u672c\u8a9e", "\U0001F4BF\u200D\U0001F3B5",
                             " a  b ", "\u202eabc", "\u200b", "/:*?"}) {
        EXPECT_EQ(parseVolumeName(QString::fromUtf8(
                      document("<key>VolumeName</key><string>" + QByteArray(name) + "</string>"))),
                  QString::fromUtf8(name));
    }
}

TEST(ParseFirstVolumeTest, TheFirstOfAListOfTextsIsTheName) {
    EXPECT_EQ(parseFirstVolume(list("<key>VolumesFromDisks</key><array><string>A</string>"
                                    "<string>B</string></array>")),
              QStringLiteral("A"));
    EXPECT_EQ(parseFirstVolume(list("<key>VolumesFromDisks</key><array><string>A</string>"
                                    "<string/></array>")),
              QStringLiteral("A"));
}

TEST(ParseFirstVolumeTest, EverythingElseIsNoName) {
    for (const char* entries :
         {"", "<key>VolumesFromDisks</key><array/>",
          "<key>VolumesFromDisks</key><string>A</string>",
          "<key>VolumesFromDisks</key><array><string/><string>B</string></array>",
          "<key>VolumesFromDisks</key><array><string>A</string><integer>1</integer></array>",
          "<key>VolumesFromDisks</key><array><array><string>A</string></array></array>",
          "<key>VolumesFromDisks</key><dict/>"}) {
        EXPECT_EQ(parseFirstVolume(list(entries)), std::nullopt) << entries;
    }
}

TEST(ParseTotalBytesTest, TotalSizeIsPreferredToSize) {
    EXPECT_EQ(parseTotalBytes(list("<key>Size</key><integer>1</integer>"
                                   "<key>TotalSize</key><integer>2</integer>")),
              2);
    EXPECT_EQ(parseTotalBytes(list("<key>Size</key><integer>1</integer>"
                                   "<key>TotalSize</key><integer>0</integer>")),
              0);
}

TEST(ParseTotalBytesTest, SizeStandsInForAMissingTotalSize) {
    EXPECT_EQ(parseTotalBytes(list("<key>Size</key><integer>9223372036854775807</integer>")),
              std::numeric_limits<qint64>::max());
}

TEST(ParseTotalBytesTest, SizeStandsInForATotalSizeThatIsNoFittingInteger) {
    for (const char* total :
         {"<string>5</string>", "<integer>9223372036854775808</integer>",
          "<integer>18446744073709551615</integer>", "<true/>", "<dict/>",
          "<array><string>5</string></array>", "<real>5</real>", "<integer>5 MB</integer>"}) {
        EXPECT_EQ(
            parseTotalBytes(QString::fromUtf8(document("<key>TotalSize</key>" + QByteArray(total) +
                                                       "<key>Size</key><integer>1</integer>"))),
            1)
            << total;
    }
}

TEST(ParseTotalBytesTest, AWholeTotalSizeOfAnotherKindIsTheLastChoice) {
    EXPECT_EQ(parseTotalBytes(list("<key>TotalSize</key><real>4.7e9</real>")), 4'700'000'000);
    EXPECT_EQ(parseTotalBytes(list("<key>TotalSize</key><real>5</real>"
                                   "<key>Size</key><string>1</string>")),
              5);
    EXPECT_EQ(parseTotalBytes(list("<key>TotalSize</key><real>-9223372036854775808</real>")),
              std::numeric_limits<qint64>::min());
}

TEST(ParseTotalBytesTest, EverythingElseHasNoSize) {
    for (const char* entries :
         {"", "<key>TotalSize</key><string>5</string>", "<key>TotalSize</key><real>5.5</real>",
          "<key>TotalSize</key><real>1e19</real>",
          "<key>TotalSize</key><real>9223372036854775808</real>",
          "<key>TotalSize</key><real>nan</real>", "<key>TotalSize</key><real>inf</real>",
          "<key>TotalSize</key><real>-inf</real>",
          "<key>TotalSize</key><integer>18446744073709551615</integer>",
          "<key>TotalSize</key><true/>", "<key>Size</key><real>5</real>",
          "<key>Size</key><string>5</string>"}) {
        EXPECT_EQ(parseTotalBytes(list(entries)), std::nullopt) << entries;
    }
    EXPECT_EQ(parseTotalBytes(QStringLiteral("garbage")), std::nullopt);
}

TEST(ParseImageSourceTest, TheLastMatchingRowIsTheSource) {
    EXPECT_EQ(source(listing), QStringLiteral("disk4s2"));
    EXPECT_EQ(source("a disk4s9\nb disk4s1\n"), QStringLiteral("disk4s1"));
}

TEST(ParseImageSourceTest, WithoutASliceThereIsNone) {
    EXPECT_EQ(source(""), std::nullopt);
    EXPECT_EQ(source("   0:  CD_partition_scheme  *681.6 MB   disk4\n"), std::nullopt);
}

TEST(ParseImageSourceTest, RowsOfADiskWithALongerNumberAreNotThisDisks) {
    EXPECT_EQ(source("1: a disk4s1\n2: b disk40s2\n3: c disk40\n"), QStringLiteral("disk4s1"));
    EXPECT_EQ(source("2: b disk40s2\n"), std::nullopt);
}

TEST(ParseImageSourceTest, TheLastPieceMustBeginWithThePrefix) {
    EXPECT_EQ(source("disk4s1 x\n"), std::nullopt);
    EXPECT_EQ(source("a xdisk4s1\n"), std::nullopt);
    EXPECT_EQ(source("a Disk4s1\n"), std::nullopt);
    EXPECT_EQ(source("a /dev/disk4s1\n"), std::nullopt);
    EXPECT_EQ(source("disk4s1\n"), QStringLiteral("disk4s1"));
    EXPECT_EQ(source("disk4s\n"), QStringLiteral("disk4s"));
    EXPECT_EQ(source("a disk4s1s1\n"), QStringLiteral("disk4s1s1"));
}

TEST(ParseImageSourceTest, RowsAreSplitAtBlanksOnly) {
    EXPECT_EQ(source("a\tdisk4s1\n"), std::nullopt);
    EXPECT_EQ(source("a disk4s1\t\n"), QStringLiteral("disk4s1\t"));
    EXPECT_EQ(source("a disk4s1   \n"), QStringLiteral("disk4s1"));
    EXPECT_EQ(source("a\u00a0disk4s1\n"), std::nullopt);
}

TEST(ParseImageSourceTest, RowsEndAtLineFeedsOnly) {
    EXPECT_EQ(source("a disk4s1\r\nb x\r\n"), QStringLiteral("disk4s1\r"));
    EXPECT_EQ(source("a disk4s1\rb x"), std::nullopt);
}

TEST(ParseImageSourceTest, EmptyRowsAndRowsOfBlanksAreSkipped) {
    EXPECT_EQ(source("\n\n   \na disk4s1\n\n   \n"), QStringLiteral("disk4s1"));
}

TEST_F(DiskutilQueryTest, TheVolumesNameIsFirstAskedOfTheDevice) {
    answer(print(document("<key>VolumeName</key><string>MY DISC</string>")));
    EXPECT_EQ(DriveStatus::volumeName(disk4), QStringLiteral("MY DISC"));
    EXPECT_THAT(log(), ElementsAre(QLatin1String(infoLine)));
}

TEST_F(DiskutilQueryTest, EveryOtherAnswerLeadsToTheListOfVolumes) {
    const QByteArray volumes =
        print(document("<key>VolumesFromDisks</key><array><string>LISTED</string></array>"));
    const QByteArray named = print(document("<key>VolumeName</key><string>N</string>"));
    const QList<QByteArray> answers{
        "exit 1",
        named + "\nexit 1",
        named + "\nkill -9 $$",
        "true",
        "printf '\\377'",
        print("no list"),
        print("<plist><array/></plist>"),
        print(document("")),
        print(document("<key>VolumeName</key><integer>1</integer>")),
        print(document("<key>VolumeName</key><string></string>")),
    };
    for (const QByteArray& info : answers) {
        answer(info, volumes);
        EXPECT_EQ(DriveStatus::volumeName(disk4), QStringLiteral("LISTED")) << info.constData();
        EXPECT_THAT(log().mid(log().size() - 2),
                    ElementsAre(QLatin1String(infoLine), QLatin1String(volumesLine)));
    }
}

TEST_F(DiskutilQueryTest, AnEmptyVolumeNameFallsBackToTheFirstOfTheListedVolumes) {
    answer(print(document("<key>VolumeName</key><string/>")),
           print(document("<key>VolumesFromDisks</key><array><string>FIRST</string>"
                          "<string>SECOND</string></array>")));
    EXPECT_EQ(DriveStatus::volumeName(disk4), QStringLiteral("FIRST"));
}

TEST_F(DiskutilQueryTest, WithoutEitherTheDiscHasNoName) {
    const QByteArray volumes =
        print(document("<key>VolumesFromDisks</key><array><string>LISTED</string></array>"));
    for (const QByteArray& answered : QList<QByteArray>{"exit 1", volumes + "\nexit 1", "true",
                                                        print("no list"), print(document(""))}) {
        answer("exit 1", answered);
        EXPECT_EQ(DriveStatus::volumeName(disk4), std::nullopt) << answered.constData();
    }
}

TEST_F(DiskutilQueryTest, AnAudioDiscIsReadFromTheWholeDeviceWithoutAsking) {
    answer("exit 1", "exit 1", print(listing));
    EXPECT_EQ(DriveStatus::imageSourceBSDName(disk4, Audio::Yes), disk4);
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(DiskutilQueryTest, ADataDiscIsReadFromItsLastSlice) {
    answer("exit 1", "exit 1", print(listing));
    EXPECT_EQ(DriveStatus::imageSourceBSDName(disk4, Audio::No), QStringLiteral("disk4s2"));
    EXPECT_THAT(log(), ElementsAre(QLatin1String(rowsLine)));
}

TEST_F(DiskutilQueryTest, ADiscWithoutSlicesIsReadFromTheWholeDevice) {
    for (const QByteArray& rows :
         QList<QByteArray>{print(QByteArray("   0: a disk4\n   1: b disk40s2")), "true",
                           "printf 'a disk4s1\\n\\377'", print(listing) + "\nexit 1", "exit 1"}) {
        answer("exit 1", "exit 1", rows);
        EXPECT_EQ(DriveStatus::imageSourceBSDName(disk4, Audio::No), disk4) << rows.constData();
    }
}

TEST_F(DiskutilQueryTest, TheSizeIsAskedOfTheDevice) {
    answer(print(document("<key>TotalSize</key><integer>681574400</integer>")));
    EXPECT_EQ(DriveStatus::totalBytes(disk4), 681574400);
    EXPECT_THAT(log(), ElementsAre(QLatin1String(infoLine)));
}

TEST_F(DiskutilQueryTest, AFailedOrUnreadableAnswerHasNoSize) {
    const QByteArray good = print(document("<key>TotalSize</key><integer>5</integer>"));
    for (const QByteArray& info :
         QList<QByteArray>{good + "\nexit 1", "true", print("no list"), "printf '\\377'",
                           good + "\nkill -15 $$", print("<plist><array/></plist>")}) {
        answer(info);
        EXPECT_EQ(DriveStatus::totalBytes(disk4), std::nullopt) << info.constData();
    }
}

TEST_F(DiskutilQueryTest, AToolThatCannotBeStartedIsLikeOneThatFails) {
    folder.write(QStringLiteral("tools/usr/sbin/diskutil"), "not executable");
    EXPECT_EQ(DriveStatus::volumeName(disk4), std::nullopt);
    EXPECT_EQ(DriveStatus::imageSourceBSDName(disk4, Audio::No), disk4);
    EXPECT_EQ(DriveStatus::totalBytes(disk4), std::nullopt);
}

}  // namespace
