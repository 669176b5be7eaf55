// The manual page and the completion know every command and option that the program knows.
#include <gmock/gmock.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>

#include "HelpText.h"
#include "TestFolder.h"

namespace {

using testing::HasSubstr;

QString read(const char* name) {
    QFile file(QStringLiteral(SPINDRIFT_COMMAND_LINE_SOURCE "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return QString::fromUtf8(file.readAll());
}

// Every "--option" of all help texts.
QSet<QString> options() {
    QString help = helpText(std::nullopt);
    for (const Command command :
         {Command::Status, Command::Rip, Command::SpeedTest, Command::History, Command::Nickname,
          Command::Eject, Command::Access, Command::Settings}) {
        help += helpText(command);
    }
    QSet<QString> found;
    auto matches = QRegularExpression(QStringLiteral("--[a-z]+")).globalMatch(help);
    while (matches.hasNext()) {
        found.insert(matches.next().captured());
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
                    SPINDRIFT_COMMAND_LINE_SOURCE "/spindrift-cli.bash", "spindrift-cli"} +
            words);
    EXPECT_TRUE(bash.waitForFinished());
    EXPECT_EQ(bash.readAllStandardError(), "");
    QStringList lines = QString::fromUtf8(bash.readAllStandardOutput())
                            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    lines.sort();
    return lines;
}

TEST(ManualTest, ThePageNamesEveryCommandAndOption) {
    const std::string page = read("spindrift-cli.1").remove(QLatin1Char('\\')).toStdString();
    for (const char* command :
         {"status", "rip", "speed-test", "history", "nickname", "eject", "access", "settings"}) {
        EXPECT_THAT(page, HasSubstr(command));
    }
    EXPECT_EQ(options().size(), 8);
    for (const QString& option : options()) {
        EXPECT_THAT(page, HasSubstr(option.toStdString()));
    }
}

TEST(ManualTest, CompletionOffersTheCommands) {
    EXPECT_EQ(completionsOf({""}), (QStringList{"access", "eject", "history", "nickname", "rip",
                                                "settings", "speed-test", "status"}));
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
