// The manual page and the completion know every command and option that the program knows.
#include <gmock/gmock.h>

#include <QFile>
#include <QProcess>
#include <QSet>

#include "CommandTable.h"
#include "FilledTemplate.h"
#include "HelpText.h"
#include "PreferenceTable.h"
#include "TestFolder.h"

namespace {

using testing::HasSubstr;

QString read(const char* name) {
    QFile file(QStringLiteral(SPINDRIFT_COMMAND_LINE_TEXTS "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return QString::fromUtf8(file.readAll());
}

QSet<QString> options() {
    QSet<QString> found;
    for (const OptionRow& option : CommandTable::commonOptions()) {
        found.insert(QStringLiteral("--%1").arg(QLatin1String(option.name)));
    }
    for (const OptionRow& option : CommandTable::row(Command::Rip).options) {
        found.insert(QStringLiteral("--%1").arg(QLatin1String(option.name)));
    }
    return found;
}

// What bash offers for the last of these words.
QStringList completionsOf(const QStringList& words) {
    QProcess bash;
    bash.start(
        QStringLiteral("/bin/bash"),
        QStringList{"--norc", "-c",
                    "source \"$0\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
                    "_spindrift_cli 2>/dev/null; printf '%s\\n' \"${COMPREPLY[@]}\"",
                    SPINDRIFT_COMMAND_LINE_TEXTS "/spindrift-cli.bash", "spindrift-cli"} +
            words);
    EXPECT_TRUE(bash.waitForFinished());
    EXPECT_EQ(bash.readAllStandardError(), "");
    QStringList lines = QString::fromUtf8(bash.readAllStandardOutput())
                            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    lines.sort();
    return lines;
}

TEST(ManualTest, ThePageNamesEveryCommandOptionAndSetting) {
    const std::string page = read("spindrift-cli.1").remove(QLatin1Char('\\')).toStdString();
    for (const CommandRow& command : CommandTable::commands()) {
        EXPECT_THAT(page, HasSubstr(std::string(".TP\nfB") + command.name + "fP"));
    }
    EXPECT_EQ(options().size(), 8);
    for (const QString& option : options()) {
        EXPECT_THAT(page, HasSubstr("fB" + option.toStdString() + "fP"));
    }
    for (const PreferenceRow& row : preferenceTable) {
        EXPECT_THAT(page, HasSubstr(std::string(".TP\nfB") + row.key + "fP\n"));
    }
    EXPECT_THAT(page, testing::Not(HasSubstr("@")));
}

TEST(ManualTest, ThePageMarksOptionsAndTheNamesOfArguments) {
    EXPECT_TRUE(filledTemplate(QStringLiteral("@OPTION_ENTRIES@\n"))
                    .startsWith(QStringLiteral(
                        ".TP\n\\fB\\-\\-json\\fP\nPrint one JSON object a line.\n.TP\n"
                        "\\fB\\-\\-practice\\fP [\\fIFILE\\fP.iso]\n")));
    const QString commands = filledTemplate(QStringLiteral("@COMMAND_ENTRIES@\n"));
    EXPECT_TRUE(commands.contains(QStringLiteral("\\fBspeed\\-test\\fP")));
    EXPECT_TRUE(commands.contains(
        QStringLiteral("\\fB\\-o\\fP, \\fB\\-\\-output\\fP \\fIFILE\\fP\nThe image to write;")));
}

TEST(ManualTest, TheHelpOfACommandNamesItsOptionsAndThoseOfAll) {
    for (const CommandRow& command : CommandTable::commands()) {
        const std::string help = helpText(command.command).toStdString();
        for (const auto& options : {command.options, CommandTable::commonOptions()}) {
            for (const OptionRow& option : options) {
                EXPECT_THAT(help, HasSubstr("\n  " + option.usage().toStdString() + " "));
                EXPECT_THAT(help, HasSubstr(std::string(option.help) + "\n"));
            }
        }
        for (const QString& line : helpText(command.command).split(QLatin1Char('\n'))) {
            EXPECT_LE(line.size(), 100) << line.toStdString();
        }
        EXPECT_THAT(helpText(std::nullopt).toStdString(),
                    HasSubstr("\n  " + command.synopsis().toStdString() + " "));
    }
}

TEST(ManualTest, TheHelpOfSettingsNamesEveryKey) {
    for (const PreferenceRow& row : preferenceTable) {
        EXPECT_THAT(helpText(Command::Settings).toStdString(),
                    HasSubstr(std::string("\n  ") + row.key + " "));
    }
}

TEST(ManualTest, CompletionOffersTheCommands) {
    EXPECT_EQ(completionsOf({""}),
              (QStringList{"access", "eject", "history", "leftovers", "nickname", "rip", "settings",
                           "speed-test", "status"}));
    EXPECT_EQ(completionsOf({"--json", "s"}), (QStringList{"settings", "speed-test", "status"}));
}

TEST(ManualTest, CompletionOffersEveryOptionOfRip) {
    QStringList expected = options().values();
    expected.sort();
    EXPECT_EQ(completionsOf({"rip", "--"}), expected);
}

TEST(ManualTest, CompletionOffersNoRipOptionsElsewhere) {
    EXPECT_EQ(completionsOf({"status", "--"}),
              (QStringList{"--help", "--json", "--practice", "--version"}));
}

TEST(ManualTest, CompletionOffersFilesForTheImageHoweverItIsNamed) {
    TestFolder folder;
    const QStringList found{folder.write(QStringLiteral("holiday.iso"), "")};
    const QString begun = folder.path(QStringLiteral("hol"));
    EXPECT_EQ(completionsOf({"rip", "--output", begun}), found);
    EXPECT_EQ(completionsOf({"rip", "-o", begun}), found);
    EXPECT_EQ(completionsOf({"rip", "--output", "=", begun}), found);
    EXPECT_EQ(completionsOf({"rip", "--practice", begun}), found);
}

TEST(ManualTest, CompletionOffersTheSettingsAndTheirValues) {
    EXPECT_EQ(completionsOf({"settings", "e"}), QStringList{"ejectWhenDone"});
    EXPECT_EQ(completionsOf({"settings", "retroMode", ""}), (QStringList{"false", "true"}));
}

}  // namespace
