#include "PracticeDrive.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "ScratchFolder.h"
#include "Utf8.h"

using testing::HasSubstr;
using testing::Not;

namespace {

class PracticeDriveTest : public testing::Test {
protected:
    // The drive with this drive.json, and what was wrong with it.
    Result<PracticeDrive> readWith(const std::string& json) {
        m_folder.write("drive.json", json);
        return read();
    }

    Result<PracticeDrive> read() { return readFrom(m_folder.path()); }

    Result<PracticeDrive> readFrom(const std::string& folder) {
        auto drive = PracticeDrive::read(folder);
        m_error = drive ? "" : drive.failure().sentence;
        return drive;
    }

    ScratchFolder m_folder;
    std::string m_error;
};

TEST_F(PracticeDriveTest, AnEmptyFolderIsAGoodDriveWithAnEmptyTray) {
    const auto drive = read();
    ASSERT_TRUE(drive) << m_error;
    EXPECT_EQ(drive->folder, m_folder.path());
    EXPECT_FALSE(drive->disc);
    EXPECT_TRUE(drive->faults.empty());
    EXPECT_EQ(drive->bytesPerSecond, 0U);
    EXPECT_FALSE(drive->denyAccess || drive->failEject || drive->noDrive);
    EXPECT_FALSE(drive->vendor.empty() || drive->product.empty() || drive->revision.empty());
    EXPECT_LE(drive->vendor.size(), 8U);
    EXPECT_LE(drive->product.size(), 16U);
    EXPECT_LE(drive->revision.size(), 4U);
}

TEST_F(PracticeDriveTest, EveryKeyIsRead) {
    m_folder.write("disc.iso", std::string(4096, 'x'));
    const auto drive = readWith(R"({"vendor": "ACME", "product": "Disc Eater", "revision": "2.1",
        "bytesPerSecond": 2000000, "discType": "DVD+R DL", "audio": true, "volumeName": "My Disc",
        "denyAccess": true, "failEject": true, "noDrive": true,
        "faults": [{"lba": 3, "count": 2, "kind": "unreadable"},
                   {"lba": 9, "kind": "flaky", "times": 2},
                   {"lba": 10, "kind": "hang", "seconds": 0.5},
                   {"lba": 0, "count": 4, "kind": "changed"}]})");
    ASSERT_TRUE(drive) << m_error;
    EXPECT_EQ(drive->vendor, "ACME");
    EXPECT_EQ(drive->product, "Disc Eater");
    EXPECT_EQ(drive->revision, "2.1");
    EXPECT_EQ(drive->bytesPerSecond, 2000000U);
    EXPECT_TRUE(drive->denyAccess && drive->failEject && drive->noDrive);
    ASSERT_TRUE(drive->disc);
    EXPECT_EQ(drive->disc->path, m_folder.path("disc.iso"));
    EXPECT_EQ(drive->disc->bytes, 4096U);
    EXPECT_EQ(drive->disc->type, "DVD+R DL");
    EXPECT_TRUE(drive->disc->audio);
    EXPECT_EQ(drive->disc->sectorBytes(), 2352U);
    EXPECT_EQ(drive->disc->volumeName, "My Disc");
    const std::vector<PracticeFault> expected = {
        {3, 2, PracticeFault::Kind::Unreadable, 1, 1},
        {9, 1, PracticeFault::Kind::Flaky, 2, 1},
        {10, 1, PracticeFault::Kind::Hang, 1, 0.5},
        {0, 4, PracticeFault::Kind::Changed, 1, 1},
    };
    EXPECT_EQ(drive->faults, expected);
}

TEST_F(PracticeDriveTest, AllPrintableAsciiMayStandInTheDrivesTextsAndMoreInTheDiscs) {
    std::string all;
    for (char c = ' '; c <= '~'; ++c) {
        all += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    m_folder.write("disc.iso", "x");
    const auto drive = readWith("{\"vendor\": \"" + all + "\", \"volumeName\": \"Grüße 💿\"}");
    ASSERT_TRUE(drive) << m_error;
    EXPECT_EQ(drive->vendor.size(), 95U);
    ASSERT_TRUE(drive->disc);
    EXPECT_EQ(drive->disc->volumeName, "Grüße 💿");
}

TEST_F(PracticeDriveTest, TheDiscMayBeASymbolicLink) {
    m_folder.write("elsewhere/image", std::string(2048, 'x'));
    std::filesystem::create_symlink(m_folder.path("elsewhere/image"), m_folder.path("disc.iso"));
    const auto drive = read();
    ASSERT_TRUE(drive) << m_error;
    ASSERT_TRUE(drive->disc);
    EXPECT_EQ(drive->disc->bytes, 2048U);
    EXPECT_EQ(drive->disc->sectorBytes(), 2048U);
    EXPECT_FALSE(drive->disc->volumeName);
}

TEST_F(PracticeDriveTest, ALinkToNothingIsAnEmptyTray) {
    std::filesystem::create_symlink(m_folder.path("gone"), m_folder.path("disc.iso"));
    const auto drive = read();
    ASSERT_TRUE(drive) << m_error;
    EXPECT_FALSE(drive->disc);
}

TEST_F(PracticeDriveTest, AFolderInTheTrayIsAnError) {
    std::filesystem::create_directory(m_folder.path("disc.iso"));
    EXPECT_FALSE(read());
    EXPECT_THAT(m_error, HasSubstr("disc.iso: it is not a regular file"));
}

TEST_F(PracticeDriveTest, TheTypeFollowsTheSizeWhenItIsNotGiven) {
    const struct {
        std::uint64_t bytes;
        const char* type;
    } cases[] = {{0, "CD-ROM"},
                 {900'000'000, "CD-ROM"},
                 {900'000'001, "DVD-ROM"},
                 {9'000'000'000, "DVD-ROM"},
                 {9'000'000'001, "BD-ROM"}};
    m_folder.write("disc.iso", {});
    for (const auto& [bytes, type] : cases) {
        std::filesystem::resize_file(m_folder.path("disc.iso"), bytes);
        const auto drive = read();
        ASSERT_TRUE(drive && drive->disc) << m_error;
        EXPECT_EQ(drive->disc->type, type) << bytes;
    }
}

TEST_F(PracticeDriveTest, UnknownKeysAreIgnored) {
    const auto drive = readWith(R"({"colour": "beige", "vendor": "ACME"})");
    ASSERT_TRUE(drive) << m_error;
    EXPECT_EQ(drive->vendor, "ACME");
}

TEST_F(PracticeDriveTest, AWrongTypeIsAnErrorThatNamesTheKey) {
    const struct {
        const char* json;
        const char* message;
    } cases[] = {
        {R"({"vendor": 1})", "\"vendor\" must be a text"},
        {R"({"product": null})", "\"product\" must be a text"},
        {R"({"revision": []})", "\"revision\" must be a text"},
        {R"({"vendor": "a\nb"})", "\"vendor\" must not contain control characters"},
        {R"({"vendor": "Müller"})", "\"vendor\" must be of printable ASCII characters only"},
        {R"({"product": "\u007f"})", "\"product\" must not contain control characters"},
        {R"({"product": "💿"})", "\"product\" must be of printable ASCII characters only"},
        {R"({"revision": "\u0085"})", "\"revision\" must be of printable ASCII characters only"},
        {R"({"bytesPerSecond": "fast"})", "\"bytesPerSecond\" must be a whole number"},
        {R"({"bytesPerSecond": -1})", "\"bytesPerSecond\" must be a whole number"},
        {R"({"bytesPerSecond": 1.5})", "\"bytesPerSecond\" must be a whole number"},
        {R"({"discType": true})", "\"discType\" must be a text"},
        {R"({"audio": "yes"})", "\"audio\" must be true or false"},
        {R"({"volumeName": 7})", "\"volumeName\" must be a text"},
        {R"({"denyAccess": 1})", "\"denyAccess\" must be true or false"},
        {R"({"failEject": 0})", "\"failEject\" must be true or false"},
        {R"({"noDrive": "no"})", "\"noDrive\" must be true or false"},
        {R"({"faults": {}})", "\"faults\" must be a list"},
        {R"({"faults": [1]})", "must be an object"},
        {R"({"faults": [{"kind": "hang"}]})", "needs \"lba\" and \"kind\""},
        {R"({"faults": [{"lba": 1}]})", "needs \"lba\" and \"kind\""},
        {R"({"faults": [{"lba": -1, "kind": "hang"}]})", "\"lba\" must be a whole number"},
        {R"({"faults": [{"lba": 1, "kind": "odd"}]})", "not \"odd\""},
        {R"({"faults": [{"lba": 1, "kind": "hang", "count": 0}]})", "\"count\""},
        {R"({"faults": [{"lba": 1, "kind": "flaky", "times": 0}]})", "\"times\""},
        {R"({"faults": [{"lba": 1, "kind": "hang", "seconds": -1}]})", "\"seconds\""},
        {R"({"faults": [{"lba": 1, "kind": "hang", "seconds": "1"}]})", "\"seconds\""},
        {R"({"faults": [{"lba": 2, "kind": "hang", "count": 18446744073709551615}]})",
         "too large together"},
        {R"({"vendor": "A", "vendor": "A"})", "\"vendor\" is given twice"},
        {R"({"faults": [{"lba": 1, "kind": "hang", "lba": 2}]})", "\"lba\" is given twice"},
        {R"({"discType": ""})", "\"discType\" must be a type of disc"},
        {R"({"discType": " none "})", "\"discType\" must be a type of disc"},
        {R"({"bytesPerSecond": 18446744073709551616})", "\"bytesPerSecond\" must be"},
        {R"({"faults": [{"lba": 1e3, "kind": "hang"}]})", "\"lba\" must be a whole number"},
        {R"({"faults": [{"lba": 1, "kind": "hang", "seconds": 1e999}]})", "not valid JSON"},
        {R"([])", "one JSON object"},
        {"null", "one JSON object"},
        {"{} {}", "not valid JSON"},
        {"{'vendor': 'A'}", "not valid JSON"},
        {"{\"vendor\": \"A\",}", "not valid JSON"},
        {R"({"vendor": "ACME")", "not valid JSON"},
        {"", "not valid JSON"},
        {"{\"vendor\": \"\xff\"}", "not valid JSON"},
    };
    for (const auto& [json, message] : cases) {
        EXPECT_FALSE(readWith(json)) << json;
        EXPECT_THAT(m_error, HasSubstr("drive.json: ")) << json;
        EXPECT_THAT(m_error, HasSubstr(message)) << json;
        EXPECT_THAT(m_error, Not(HasSubstr("\n"))) << json;
    }
}

TEST_F(PracticeDriveTest, TheSameNameInTwoObjectsIsNotGivenTwice) {
    const auto drive = readWith(R"({"faults": [{"lba": 1, "kind": "hang"},
        {"lba": 2, "kind": "hang"}], "notes": {"lba": 3, "more": {"faults": 4}}})");
    ASSERT_TRUE(drive) << m_error;
    EXPECT_EQ(drive->faults.size(), 2U);
}

TEST_F(PracticeDriveTest, AByteOrderMarkBeforeTheSettingsDoesNoHarm) {
    const auto drive = readWith("\xEF\xBB\xBF{\"vendor\": \"ACME\"}");
    ASSERT_TRUE(drive) << m_error;
    EXPECT_EQ(drive->vendor, "ACME");
}

TEST_F(PracticeDriveTest, DeeplyNestedSettingsDoNotBringTheToolDown) {
    std::string json = R"({"notes": )";
    json.append(100'000, '[').append(100'000, ']').append("}");
    EXPECT_TRUE(readWith(json)) << m_error;
    json.pop_back();
    EXPECT_FALSE(readWith(json));
}

TEST_F(PracticeDriveTest, SettingsThatCannotBeReadAreAnError) {
    std::filesystem::create_directory(m_folder.path("drive.json"));
    EXPECT_FALSE(read());
    EXPECT_THAT(m_error, HasSubstr("drive.json: it cannot be read"));
}

TEST_F(PracticeDriveTest, AFolderThatIsNotThereIsAnError) {
    EXPECT_FALSE(readFrom(m_folder.path("none")));
    EXPECT_THAT(m_error, HasSubstr("No such file or directory"));
    m_folder.write("file", "x");
    EXPECT_FALSE(readFrom(m_folder.path("file")));
    EXPECT_THAT(m_error, HasSubstr("is not a folder"));
}

TEST_F(PracticeDriveTest, SlashesAtTheFoldersEndAreDropped) {
    const auto drive = readFrom(m_folder.path() + "//");
    ASSERT_TRUE(drive) << m_error;
    EXPECT_EQ(drive->folder, m_folder.path());
}

TEST(PracticeDriveFolderTest, AnEmptyOrMissingVariableMeansRealDrives) {
    unsetenv(PracticeDrive::environmentVariable);
    EXPECT_FALSE(PracticeDrive::chosenFolder());
    setenv(PracticeDrive::environmentVariable, "", 1);
    EXPECT_FALSE(PracticeDrive::chosenFolder());
    setenv(PracticeDrive::environmentVariable, "/some/folder", 1);
    EXPECT_EQ(PracticeDrive::chosenFolder(), "/some/folder");
    unsetenv(PracticeDrive::environmentVariable);
}

TEST_F(PracticeDriveTest, AFailureIsOneLineOfTextWhateverTheFileHolds) {
    for (const char* json : {R"({"a\nb\u001b": 1, "a\nb\u001b": 2})", "{\"vendor\": \"\xff\n"}) {
        EXPECT_FALSE(readWith(json));
        EXPECT_EQ(m_error, Utf8::oneLine(m_error));
        EXPECT_THAT(m_error, HasSubstr("drive.json"));
    }
}

}  // namespace
