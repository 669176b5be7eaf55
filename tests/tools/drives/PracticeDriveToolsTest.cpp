// The built drutil and diskutil on the practice drive.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "BuiltTool.h"
#include "DescriptorHolder.h"
#include "ScratchFolder.h"
#include "Utf8.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class PracticeDriveToolsTest : public testing::Test {
protected:
    ToolResult drutil(const std::vector<std::string>& arguments) {
        return BuiltTool::run(BuiltTool::drutil(), arguments, environment());
    }
    ToolResult diskutil(const std::vector<std::string>& arguments) {
        return BuiltTool::run(BuiltTool::diskutil(), arguments, environment());
    }
    ToolResult info() { return diskutil({"info", "-plist", "/dev/practice0"}); }
    BuiltTool::Environment environment() const {
        return {{"SPINDRIFT_PRACTICE_DRIVE", folder.path()}};
    }

    // A disc of one small file, made as people make them.
    void burn(const std::vector<std::string>& options, const std::string& label) {
        folder.write("content/read me", "text");
        std::vector<std::string> arguments = {"-as", "mkisofs", "-quiet", "-V", label};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.insert(arguments.end(), {"-o", folder.path("disc.iso"), folder.path("content")});
        const ToolResult made = BuiltTool::run("xorriso", arguments);
        ASSERT_EQ(made.status, 0) << made.errors;
    }
    void makeSparseDisc(off_t bytes) {
        folder.write("disc.iso", "");
        ASSERT_EQ(truncate(folder.path("disc.iso").c_str(), bytes), 0);
    }
    static std::string size(std::uint64_t bytes) {
        return "<key>TotalSize</key>\n\t<integer>" + std::to_string(bytes) +
               "</integer>\n\t<key>Size</key>\n\t<integer>" + std::to_string(bytes) + "</integer>";
    }
    static std::string name(const std::string& text) {
        return "<key>VolumeName</key>\n\t<string>" + text + "</string>";
    }

    ScratchFolder folder;
};

TEST_F(PracticeDriveToolsTest, AnEmptyTrayIsADriveWithoutMedia) {
    const ToolResult status = drutil({"status"});
    EXPECT_EQ(status.status, 0);
    EXPECT_EQ(status.output,
              " Vendor   Product           Rev \n"
              " SPINDRFT Practice Drive    1.0 \n"
              "\n"
              "           Type: No Media Inserted\n");
    EXPECT_EQ(status.errors, "");
}

TEST_F(PracticeDriveToolsTest, WithoutADriveStatusFailsAndSaysNothing) {
    folder.write("drive.json", R"({"noDrive": true})");
    const ToolResult status = drutil({"status"});
    EXPECT_EQ(status.status, 1);
    EXPECT_EQ(status.output, "");
    EXPECT_EQ(status.errors, "");
}

TEST_F(PracticeDriveToolsTest, WithoutADriveADiscIsNotFoundAndNothingEjects) {
    folder.write("disc.iso", "x");
    folder.write("drive.json", R"({"noDrive": true})");
    EXPECT_EQ(info().status, 1);
    EXPECT_EQ(info().errors, "diskutil: Could not find disk: /dev/practice0\n");
    EXPECT_EQ(drutil({"eject"}).status, 1);
    EXPECT_EQ(drutil({"eject"}).errors, "drutil: No optical drive found.\n");
    EXPECT_EQ(diskutil({"eject", "/dev/practice0"}).status, 1);
}

TEST_F(PracticeDriveToolsTest, ADiscIsNamedByTheDeviceAndDescribed) {
    burn({"-J", "-R"}, "MY DISC");
    EXPECT_THAT(drutil({"status"}).output,
                EndsWith("\n           Type: CD-ROM                Name: /dev/practice0\n"));
    EXPECT_THAT(info().output, HasSubstr(name("MY DISC")));
    EXPECT_THAT(diskutil({"list", "-plist", "/dev/practice0"}).output,
                HasSubstr("<string>MY DISC</string>"));
    EXPECT_THAT(diskutil({"list", "/dev/practice0"}).output, EndsWith(" practice0\n"));
}

TEST_F(PracticeDriveToolsTest, TheDeviceMayBeNamedWithoutItsFolder) {
    burn({}, "X");
    EXPECT_EQ(diskutil({"info", "-plist", "practice0"}).output, info().output);
}

TEST_F(PracticeDriveToolsTest, AJolietLabelWithBlanksAndLettersOfOtherLanguagesIsWhole) {
    burn({"-J", "-R"},
         "Gr\xC3\xBC\xC3\x9F"
         "e und mehr");
    EXPECT_THAT(info().output, HasSubstr(name("Gr\xC3\xBC\xC3\x9F"
                                              "e und mehr")));
}

TEST_F(PracticeDriveToolsTest, AUdfLabelIsWhole) {
    makeSparseDisc(20 << 20);
    const ToolResult made = BuiltTool::run(
        "/usr/sbin/mkudffs", {"--blocksize=2048", "--label=F\xC3\xAAte d'\xC3\xA9t\xC3\xA9 2024",
                              folder.path("disc.iso")});
    ASSERT_EQ(made.status, 0) << made.errors;
    EXPECT_THAT(info().output, HasSubstr(name("F\xC3\xAAte d'\xC3\xA9t\xC3\xA9 2024")));
}

TEST_F(PracticeDriveToolsTest, ADiscWithAFileSystemOfDisksHasItsLabel) {
    makeSparseDisc(4 << 20);
    const ToolResult made =
        BuiltTool::run("/usr/sbin/mke2fs", {"-q", "-F", "-L", "Backup 7", folder.path("disc.iso")});
    ASSERT_EQ(made.status, 0) << made.errors;
    EXPECT_THAT(info().output, HasSubstr(name("Backup 7")));
}

TEST_F(PracticeDriveToolsTest, OfTwoFileSystemsOnADiscTheOneWithALabelNamesIt) {
    makeSparseDisc(20 << 20);
    const ToolResult made = BuiltTool::run(
        "/usr/sbin/mkudffs", {"--blocksize=2048", "--label=", folder.path("disc.iso")});
    ASSERT_EQ(made.status, 0) << made.errors;
    EXPECT_THAT(info().output, HasSubstr(name("")));
    // What says that there is UDF moves behind a volume descriptor of ISO 9660 and its end.
    constexpr std::size_t sector = 2048;
    std::string image = *ScratchFolder::read(folder.path("disc.iso"));
    const std::string recognition = image.substr(16 * sector, 3 * sector);
    ASSERT_EQ(recognition.substr(1, 5), "BEA01");
    std::string volume(sector, '\0');
    volume.replace(0, 8, std::string("\1CD001\1\0", 8));
    volume.replace(40, 32, "ISO_LABEL                       ");
    std::string end(sector, '\0');
    end.replace(0, 7,
                "\xff"
                "CD001\1");
    image.replace(16 * sector, 5 * sector, volume + end + recognition);
    folder.write("disc.iso", image);
    EXPECT_THAT(info().output, HasSubstr(name("ISO_LABEL")));
}

TEST_F(PracticeDriveToolsTest, ALabelOfOtherBytesGivesOutputThatIsStillUtf8) {
    burn({}, "LABEL");
    std::string image = *ScratchFolder::read(folder.path("disc.iso"));
    const std::size_t label = image.find("LABEL", 0x8000);
    ASSERT_LT(label, 0x8800U);
    image[label + 1] = '\xE4';
    image[label + 2] = '\xFF';
    folder.write("disc.iso", image);
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"info", "-plist", "/dev/practice0"},
                                               {"list", "-plist", "/dev/practice0"},
                                               {"list", "/dev/practice0"}}) {
        const ToolResult result = diskutil(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(Utf8::valid(result.output), result.output);
        EXPECT_THAT(result.output, HasSubstr("L\xEF\xBF\xBD\xEF\xBF\xBD"
                                             "EL"));
    }
}

TEST_F(PracticeDriveToolsTest, AHybridDiscIsOneWholeDeviceWithoutSlices) {
    burn({"-R", "-append_partition", "2", "0xef", folder.write("efi", std::string(65536, 'e')),
          "-isohybrid-gpt-basdat"},
         "HYBRID");
    const ToolResult list = diskutil({"list", "/dev/practice0"});
    EXPECT_THAT(info().output, HasSubstr(name("HYBRID")));
    EXPECT_THAT(list.output, Not(HasSubstr("practice0s")));
    EXPECT_THAT(list.output, EndsWith(" practice0\n"));
}

TEST_F(PracticeDriveToolsTest, NeitherToolEjectsADiscThatAProgramReads) {
    folder.write("disc.iso", "x");
    const DescriptorHolder reader(open(folder.write(".lock", "").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(flock(reader.get(), LOCK_SH), 0);
    const ToolResult disc = diskutil({"eject", "/dev/practice0"});
    EXPECT_EQ(disc.status, 1);
    EXPECT_EQ(disc.errors, "diskutil: /dev/practice0 is busy: another program reads it\n");
    const ToolResult drive = drutil({"eject"});
    EXPECT_EQ(drive.status, 1);
    EXPECT_EQ(drive.errors, "drutil: /dev/practice0 is busy: another program reads it\n");
    EXPECT_THAT(folder.list(), ElementsAre(".lock", "disc.iso"));
}

TEST_F(PracticeDriveToolsTest, OutputThatCannotBeWrittenIsAFailureThatSaysSo) {
    folder.write("disc.iso", "x");
    for (const auto& [tool, arguments] :
         {std::pair(BuiltTool::drutil(), " status"),
          std::pair(BuiltTool::diskutil(), " info -plist /dev/practice0")}) {
        const ToolResult full =
            BuiltTool::run("/bin/sh", {"-c", tool + arguments + " >/dev/full"}, environment());
        EXPECT_EQ(full.status, 1);
        EXPECT_THAT(full.errors, EndsWith("util: standard output: No space left on device\n"));
    }
}

TEST_F(PracticeDriveToolsTest, ADiscWithoutAFileSystemHasAnEmptyName) {
    folder.write("disc.iso", patternBytes(4096));
    EXPECT_THAT(info().output, HasSubstr(name("")));
    EXPECT_THAT(diskutil({"list", "-plist", "/dev/practice0"}).output, HasSubstr("<array/>"));
}

TEST_F(PracticeDriveToolsTest, OddSizesAreGivenToTheByte) {
    for (const std::size_t bytes : {0U, 1U, 2047U, 2049U, 1000001U}) {
        folder.write("disc.iso", std::string(bytes, 'x'));
        const ToolResult result = info();
        EXPECT_EQ(result.status, 0) << bytes;
        EXPECT_THAT(result.output, HasSubstr(size(bytes)));
    }
}

TEST_F(PracticeDriveToolsTest, AHugeDiscIsABluRayOfItsFullSize) {
    makeSparseDisc(off_t{100} << 30);
    EXPECT_THAT(drutil({"status"}).output, HasSubstr("Type: BD-ROM "));
    EXPECT_THAT(info().output, HasSubstr(size(std::uint64_t{100} << 30)));
}

TEST_F(PracticeDriveToolsTest, TheTypeFollowsTheSizeUnlessTheDriveNamesOne) {
    makeSparseDisc(900'000'001);
    EXPECT_THAT(drutil({"status"}).output, HasSubstr("Type: DVD-ROM "));
    for (const char* type :
         {"CD-R", "CD-RW", "DVD-R", "DVD-R DL", "DVD-RW", "DVD-RAM", "DVD+R", "DVD+R DL", "DVD+RW",
          "DVD+RW DL", "BD-ROM", "BD-R", "BD-RE", "HD DVD-ROM", "HD DVD-RW DL", "Betamax"}) {
        folder.write("drive.json", std::string(R"({"discType": ")") + type + R"("})");
        EXPECT_THAT(drutil({"status"}).output, HasSubstr(std::string("Type: ") + type + "  "));
    }
}

TEST_F(PracticeDriveToolsTest, AnAudioDiscIsCalledAudioCD) {
    folder.write("disc.iso", std::string(2352 * 3, 'a'));
    folder.write("drive.json", R"({"audio": true, "volumeName": "ignored"})");
    EXPECT_THAT(info().output, HasSubstr(name("Audio CD")));
    EXPECT_THAT(info().output, HasSubstr(size(2352 * 3)));
}

TEST_F(PracticeDriveToolsTest, AGivenNameReplacesTheLabelAndIsEscaped) {
    burn({}, "LABEL");
    folder.write("drive.json", R"({"volumeName": "<Tom & \"Jerry\">"})");
    EXPECT_THAT(info().output, HasSubstr(name("&lt;Tom &amp; \"Jerry\"&gt;")));
}

TEST_F(PracticeDriveToolsTest, TheDrivesNamesFillTheTable) {
    folder.write("drive.json", R"({"vendor": "A~B", "product": "Two Words", "revision": "12345"})");
    EXPECT_THAT(drutil({"status"}).output, HasSubstr("\n A~B      Two Words         1234\n"));
}

TEST_F(PracticeDriveToolsTest, ADanglingLinkIsAnEmptyTray) {
    ASSERT_EQ(symlink("/nonexistent/image.iso", folder.path("disc.iso").c_str()), 0);
    EXPECT_THAT(drutil({"status"}).output, HasSubstr("Type: No Media Inserted"));
    EXPECT_EQ(info().status, 1);
    EXPECT_EQ(info().errors, "diskutil: There is no disc in /dev/practice0\n");
}

TEST_F(PracticeDriveToolsTest, AMalformedSettingsFileIsAClearErrorAndNeverAGuess) {
    folder.write("disc.iso", "x");
    using namespace std::string_literals;
    for (const std::string& text :
         {"{"s, "[]"s, ""s, R"({"vendor": 7})"s, R"({"failEject": "yes"})"s, "{}\0"s,
          "{}\0{\"noDrive\": true}"s, R"({"discType": ""})"s, R"({"discType": " "})"s,
          R"({"discType": "None"})"s, R"({"discType": "CD-R Name: /dev/sda"})"s,
          R"({"vendor": "Ä"})"s}) {
        folder.write("drive.json", text);
        for (const ToolResult& result :
             {drutil({"status"}), drutil({"eject"}), info(), diskutil({"list", "/dev/practice0"}),
              diskutil({"eject", "/dev/practice0"})}) {
            EXPECT_NE(result.status, 0) << text;
            EXPECT_EQ(result.output, "") << text;
            EXPECT_THAT(result.errors, HasSubstr("drive.json")) << text;
        }
    }
    EXPECT_THAT(folder.list(), ElementsAre("disc.iso", "drive.json"));
}

TEST_F(PracticeDriveToolsTest, ASettingsFileThatCannotBeReadIsAClearError) {
    ASSERT_EQ(mkdir(folder.path("drive.json").c_str(), 0700), 0);
    EXPECT_NE(drutil({"status"}).status, 0);
    EXPECT_THAT(drutil({"status"}).errors, HasSubstr("drive.json"));
}

TEST_F(PracticeDriveToolsTest, AFolderThatIsMissingIsAClearError) {
    const ToolResult status = BuiltTool::run(BuiltTool::drutil(), {"status"},
                                             {{"SPINDRIFT_PRACTICE_DRIVE", "/nonexistent"}});
    EXPECT_EQ(status.status, 1);
    EXPECT_THAT(status.errors, HasSubstr("/nonexistent"));
}

TEST_F(PracticeDriveToolsTest, EitherToolEjects) {
    burn({}, "X");
    EXPECT_EQ(diskutil({"eject", "/dev/practice0"}).status, 0);
    EXPECT_THAT(drutil({"status"}).output, HasSubstr("No Media Inserted"));
    burn({}, "Y");
    EXPECT_EQ(drutil({"eject"}).status, 0);
    EXPECT_THAT(drutil({"status"}).output, HasSubstr("No Media Inserted"));
}

TEST_F(PracticeDriveToolsTest, ADriveToldToFailEjectsWithNeitherTool) {
    folder.write("disc.iso", "x");
    folder.write("drive.json", R"({"failEject": true})");
    EXPECT_EQ(diskutil({"eject", "/dev/practice0"}).status, 1);
    EXPECT_EQ(drutil({"eject"}).status, 1);
    EXPECT_THAT(drutil({"eject"}).errors, HasSubstr("refused"));
    EXPECT_THAT(drutil({"status"}).output, HasSubstr("/dev/practice0"));
}

TEST_F(PracticeDriveToolsTest, UnknownCommandLinesAreUsageErrors) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {}, {"status", "-x"}, {"burn"}, {"--version"}, {"eject", "/dev/sr0"}}) {
        const ToolResult result = drutil(arguments);
        EXPECT_EQ(result.status, 64);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, HasSubstr("Usage: drutil"));
    }
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"list"},
                                               {"info", "/dev/sr0"},
                                               {"info", "-plist"},
                                               {"list", "-x", "/dev/sr0"},
                                               {"eject"},
                                               {"eject", "-force"},
                                               {"list", "-plist"},
                                               {"eject", "-force", "/dev/sr0"},
                                               {"eraseDisk", "/dev/sr0"},
                                               {"list", ""}}) {
        const ToolResult result = diskutil(arguments);
        EXPECT_EQ(result.status, 64);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, HasSubstr("Usage: diskutil"));
    }
}

TEST_F(PracticeDriveToolsTest, HelpIsGivenOnStandardOutput) {
    EXPECT_EQ(drutil({"--help"}).status, 0);
    EXPECT_THAT(drutil({"--help"}).output, HasSubstr("Usage: drutil"));
    EXPECT_EQ(diskutil({"--help"}).status, 0);
    EXPECT_THAT(diskutil({"--help"}).output, HasSubstr("Usage: diskutil"));
}

TEST_F(PracticeDriveToolsTest, OutputThatCannotBeWrittenIsAFailure) {
    const ToolResult result = BuiltTool::run(
        "sh", {"-c", "exec \"$0\" status >/dev/full", BuiltTool::drutil()}, environment());
    EXPECT_EQ(result.status, 1);
}

}  // namespace
