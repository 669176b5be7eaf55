#include "CommandArguments.h"

#include <gmock/gmock.h>

namespace {

CommandArguments parse(const QByteArrayList& arguments) {
    return parseCommandArguments(arguments);
}

Invocation parsed(const QByteArrayList& arguments) {
    const CommandArguments result = parse(arguments);
    if (const auto* error = std::get_if<UsageError>(&result)) {
        ADD_FAILURE() << error->message.toStdString();
    }
    const auto* invocation = std::get_if<Invocation>(&result);
    return invocation != nullptr ? *invocation : Invocation{};
}

std::string complaint(const QByteArrayList& arguments) {
    const CommandArguments result = parse(arguments);
    const auto* error = std::get_if<UsageError>(&result);
    return error != nullptr ? error->message.toStdString() : "(no usage error)";
}

TEST(CommandArgumentsTest, EachCommandIsKnownByItsName) {
    EXPECT_EQ(parsed({"status"}).command, Command::Status);
    EXPECT_EQ(parsed({"rip", "--output", "a"}).command, Command::Rip);
    EXPECT_EQ(parsed({"speed-test"}).command, Command::SpeedTest);
    EXPECT_EQ(parsed({"history"}).command, Command::History);
    EXPECT_EQ(parsed({"nickname"}).command, Command::Nickname);
    EXPECT_EQ(parsed({"eject"}).command, Command::Eject);
    EXPECT_EQ(parsed({"access"}).command, Command::Access);
    EXPECT_EQ(parsed({"settings"}).command, Command::Settings);
    EXPECT_EQ(parsed({"leftovers"}).command, Command::Leftovers);
}

TEST(CommandArgumentsTest, NoCommandOrAnUnknownOneIsAUsageError) {
    EXPECT_EQ(complaint({}), "No command was given.");
    EXPECT_EQ(complaint({"--json"}), "No command was given.");
    EXPECT_EQ(complaint({"Status"}), "There is no command “Status”. Did you mean “status”?");
    EXPECT_EQ(complaint({""}), "There is no command “”.");
}

TEST(CommandArgumentsTest, AnUnknownOptionIsAUsageErrorOfItsCommand) {
    EXPECT_EQ(complaint({"status", "--jason"}),
              "There is no option “--jason”. Did you mean “--json”?");
    EXPECT_EQ(complaint({"status", "-j"}), "There is no option “-j”.");
    const auto result = parse({"status", "--jason"});
    EXPECT_EQ(std::get<UsageError>(result).command, Command::Status);
}

TEST(CommandArgumentsTest, ANameThatIsNearIsSuggested) {
    EXPECT_EQ(complaint({"setings"}), "There is no command “setings”. Did you mean “settings”?");
    EXPECT_EQ(complaint({"spedtst"}), "There is no command “spedtst”.");
    EXPECT_EQ(complaint({"speedtest"}),
              "There is no command “speedtest”. Did you mean “speed-test”?");
    EXPECT_EQ(complaint({"x"}), "There is no command “x”.");
    EXPECT_EQ(complaint({"status", "-json"}), "There is no option “-j”.");
    EXPECT_EQ(complaint({"rip", "--outptu", "a"}),
              "There is no option “--outptu”. Did you mean “--output”?");
    EXPECT_EQ(complaint({"rip", "--", "--outptu", "a"}), "“a” is one argument too many for “rip”.");
}

TEST(CommandArgumentsTest, ALongOptionMayBeCutToWhatNoOtherBeginsWith) {
    const Invocation cut =
        parsed({"rip", "--out=a", "--th", "--ej", "--fo", "--js", "--pra=disc.iso"});
    const Invocation whole = parsed(
        {"rip", "--output=a", "--thorough", "--eject", "--force", "--json", "--practice=disc.iso"});
    EXPECT_EQ(cut, whole);
    EXPECT_TRUE(cut.thorough && cut.eject && cut.force && cut.json);
    EXPECT_EQ(parsed({"rip", "--o", "a"}).output, QStringLiteral("a"));
    EXPECT_EQ(complaint({"status", "--j=yes"}), "The option “--json” takes no value.");
    EXPECT_EQ(complaint({"status", "--fo"}), "“status” has no option “--force”.");
    // What all begin with is none.
    EXPECT_EQ(complaint({"status", "--=yes"}), "There is no option “--”.");
    EXPECT_EQ(complaint({"status", "--jsonx"}),
              "There is no option “--jsonx”. Did you mean “--json”?");
}

TEST(CommandArgumentsTest, LettersMayStandTogetherWithTheValueOfTheLast) {
    EXPECT_EQ(parsed({"rip", "-oa.iso"}).output, QStringLiteral("a.iso"));
    EXPECT_EQ(parsed({"rip", "-o-a.iso"}).output, QStringLiteral("-a.iso"));
    EXPECT_EQ(parsed({"rip", "-o", "--", "-a.iso"}).output, QStringLiteral("-a.iso"));
    EXPECT_TRUE(std::holds_alternative<HelpRequest>(parse({"-Vh"})));
    EXPECT_TRUE(std::holds_alternative<HelpRequest>(parse({"-hV"})));
    EXPECT_TRUE(std::holds_alternative<VersionRequest>(parse({"-VV"})));
    EXPECT_TRUE(std::holds_alternative<HelpRequest>(parse({"rip", "-ho"})));
    EXPECT_EQ(complaint({"status", "-xV"}), "There is no option “-x”.");
    EXPECT_EQ(complaint({"rip", "-o"}), "The option “-o” needs the name of a file.");
    EXPECT_EQ(complaint({"history", "-oa"}), "“history” has no option “-o”.");
}

TEST(CommandArgumentsTest, AnOptionOfRipIsRefusedElsewhere) {
    EXPECT_EQ(complaint({"status", "--force"}), "“status” has no option “--force”.");
    EXPECT_EQ(complaint({"--output", "a", "history"}), "“history” has no option “--output”.");
}

TEST(CommandArgumentsTest, GlobalOptionsStandAnywhere) {
    EXPECT_TRUE(parsed({"--json", "status"}).json);
    EXPECT_TRUE(parsed({"status", "--json"}).json);
    EXPECT_TRUE(parsed({"--practice", "status"}).practice);
    EXPECT_TRUE(parsed({"status", "--practice"}).practice);
}

TEST(CommandArgumentsTest, PracticeTakesTheNextArgumentUnlessItIsAnOptionOrACommand) {
    const Invocation before = parsed({"--practice", "rip", "--output", "a"});
    EXPECT_TRUE(before.practice);
    EXPECT_EQ(before.practiceImage, std::nullopt);
    EXPECT_EQ(before.command, Command::Rip);

    const Invocation between = parsed({"rip", "--practice", "disc.iso", "--output", "a"});
    EXPECT_EQ(between.practiceImage, QStringLiteral("disc.iso"));
    EXPECT_EQ(between.output, QStringLiteral("a"));

    const Invocation option = parsed({"rip", "--practice", "--output", "a"});
    EXPECT_EQ(option.practiceImage, std::nullopt);
    EXPECT_EQ(option.output, QStringLiteral("a"));

    const Invocation first = parsed({"--practice", "disc.iso", "status"});
    EXPECT_EQ(first.practiceImage, QStringLiteral("disc.iso"));
    EXPECT_EQ(first.command, Command::Status);
}

TEST(CommandArgumentsTest, PracticeWithAnEqualsSignTakesAnyName) {
    EXPECT_EQ(parsed({"--practice=rip", "status"}).practiceImage, QStringLiteral("rip"));
    EXPECT_EQ(parsed({"--practice=-odd.iso", "status"}).practiceImage, QStringLiteral("-odd.iso"));
    EXPECT_EQ(parsed({"--practice=a=b.iso", "status"}).practiceImage, QStringLiteral("a=b.iso"));
    EXPECT_EQ(complaint({"--practice=", "status"}), "The option “--practice=” names no file.");
}

TEST(CommandArgumentsTest, AnOptionAfterPracticeIsNeverItsFile) {
    const Invocation invocation = parsed({"rip", "--practice", "--", "a.iso"});
    EXPECT_TRUE(invocation.practice);
    EXPECT_EQ(invocation.practiceImage, std::nullopt);
    EXPECT_EQ(invocation.output, QStringLiteral("a.iso"));
}

TEST(CommandArgumentsTest, RipNeedsAFile) {
    EXPECT_EQ(complaint({"rip"}), "“rip” needs the file to write: --output FILE.");
    EXPECT_EQ(complaint({"rip", "--output"}), "The option “--output” needs the name of a file.");
    EXPECT_EQ(complaint({"rip", "--output="}), "The option “--output” needs the name of a file.");
    EXPECT_EQ(complaint({"rip", "--output", ""}),
              "The option “--output” needs the name of a file.");
    EXPECT_EQ(complaint({"rip", ""}), "“rip” needs the file to write: --output FILE.");
}

TEST(CommandArgumentsTest, AnOptionIsNotTakenForTheFile) {
    EXPECT_EQ(complaint({"rip", "--output", "--thorough"}),
              "The option “--output” needs the name of a file.");
}

TEST(CommandArgumentsTest, AFileThatBeginsWithADashIsGivenWithEqualsOrAfterTwoDashes) {
    EXPECT_EQ(parsed({"rip", "--output=-a.iso"}).output, QStringLiteral("-a.iso"));
    EXPECT_EQ(parsed({"rip", "--output", "--", "-a.iso"}).output, QStringLiteral("-a.iso"));
    EXPECT_EQ(parsed({"rip", "--force", "--", "--force"}).output, QStringLiteral("--force"));
}

TEST(CommandArgumentsTest, TheFileMayStandAlone) {
    EXPECT_EQ(parsed({"rip", "a.iso"}).output, QStringLiteral("a.iso"));
    EXPECT_EQ(parsed({"rip", "-o", "a.iso"}).output, QStringLiteral("a.iso"));
}

TEST(CommandArgumentsTest, TwoFilesAreAUsageError) {
    EXPECT_EQ(complaint({"rip", "--output", "a", "--output", "b"}),
              "Only one file can be written at a time.");
    EXPECT_EQ(complaint({"rip", "--output", "a", "b"}), "Only one file can be written at a time.");
    EXPECT_EQ(complaint({"rip", "a", "b"}), "“b” is one argument too many for “rip”.");
}

TEST(CommandArgumentsTest, StandardOutputIsNoPlaceForAnImage) {
    EXPECT_EQ(complaint({"rip", "--output", "-"}),
              "The image is moved into place as a file; it cannot go to standard output.");
}

TEST(CommandArgumentsTest, TheFlagsOfRipAreRead) {
    const Invocation all = parsed({"rip", "--thorough", "--eject", "--force", "--output", "a"});
    EXPECT_TRUE(all.thorough);
    EXPECT_TRUE(all.eject);
    EXPECT_TRUE(all.force);
    const Invocation none = parsed({"rip", "--output", "a"});
    EXPECT_FALSE(none.thorough);
    EXPECT_FALSE(none.eject);
    EXPECT_FALSE(none.force);
    EXPECT_FALSE(none.json);
    EXPECT_FALSE(none.practice);
}

TEST(CommandArgumentsTest, AFlagTakesNoValue) {
    EXPECT_EQ(complaint({"status", "--json=yes"}), "The option “--json” takes no value.");
}

TEST(CommandArgumentsTest, NicknameTakesAnEmptyTextForARemoval) {
    EXPECT_EQ(parsed({"nickname"}).operands, QStringList{});
    EXPECT_EQ(parsed({"nickname", ""}).operands, QStringList{QString()});
    EXPECT_EQ(parsed({"nickname", "Office burner"}).operands,
              QStringList{QStringLiteral("Office burner")});
    EXPECT_EQ(parsed({"nickname", "--", "-1"}).operands, QStringList{QStringLiteral("-1")});
    EXPECT_EQ(parsed({"nickname", "-"}).operands, QStringList{QStringLiteral("-")});
}

TEST(CommandArgumentsTest, ANicknameMayBeTheNameOfACommand) {
    const Invocation invocation = parsed({"nickname", "eject"});
    EXPECT_EQ(invocation.command, Command::Nickname);
    EXPECT_EQ(invocation.operands, QStringList{QStringLiteral("eject")});
}

TEST(CommandArgumentsTest, TooManyArgumentsAreAUsageError) {
    EXPECT_EQ(complaint({"status", "now"}), "“now” is one argument too many for “status”.");
    EXPECT_EQ(complaint({"nickname", "Office", "burner"}),
              "“burner” is one argument too many for “nickname”.");
    EXPECT_EQ(complaint({"settings", "a", "b", "c"}),
              "“c” is one argument too many for “settings”.");
}

TEST(CommandArgumentsTest, HelpWinsOverWhatIsMissing) {
    EXPECT_EQ(std::get<HelpRequest>(parse({"--help"})).command, std::nullopt);
    EXPECT_EQ(std::get<HelpRequest>(parse({"rip", "--help"})).command, Command::Rip);
    EXPECT_EQ(std::get<HelpRequest>(parse({"--help", "rip"})).command, Command::Rip);
    EXPECT_EQ(std::get<HelpRequest>(parse({"rip", "-h", "--version"})).command, Command::Rip);
}

TEST(CommandArgumentsTest, VersionNeedsNoCommand) {
    EXPECT_TRUE(std::holds_alternative<VersionRequest>(parse({"--version"})));
    EXPECT_TRUE(std::holds_alternative<VersionRequest>(parse({"-V"})));
}

TEST(CommandArgumentsTest, NamesInOtherAlphabetsArriveWhole) {
    EXPECT_EQ(parsed({"rip", "--output", "Ελληνικά – 日本語.iso"}).output,
              QStringLiteral("Ελληνικά – 日本語.iso"));
}

TEST(CommandArgumentsTest, AnArgumentThatIsNotTextIsRefusedRatherThanRenamed) {
    EXPECT_THAT(complaint({"rip", "--output", "caf\xe9.iso"}),
                testing::HasSubstr("is not valid text in this locale's encoding."));
}

}  // namespace
