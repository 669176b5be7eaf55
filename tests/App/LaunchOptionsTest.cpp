#include "LaunchOptions.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

namespace {

LaunchOptions parsed(const QStringList& arguments) {
    QString error;
    const auto options = LaunchOptions::parse(arguments, &error);
    EXPECT_TRUE(options) << qPrintable(error);
    return options.value_or(LaunchOptions());
}

QString refused(const QStringList& arguments) {
    QString error;
    EXPECT_FALSE(LaunchOptions::parse(arguments, &error));
    return error;
}

}  // namespace

TEST(LaunchOptionsTest, WithoutArgumentsTheComputersDriveIsUsed) {
    const LaunchOptions options = parsed({});
    EXPECT_FALSE(options.practice);
    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.version);
}

TEST(LaunchOptionsTest, ThePracticeDriveHasTheSampleDiscUnlessAFileIsNamed) {
    EXPECT_TRUE(parsed({"--practice"}).practice);
    EXPECT_FALSE(parsed({"--practice"}).practiceImage);
    EXPECT_EQ(parsed({"--practice", "disc.iso"}).practiceImage, QStringLiteral("disc.iso"));
}

TEST(LaunchOptionsTest, WhatIsJoinedToPracticeIsItsFileAsOnTheOtherCommandLine) {
    EXPECT_EQ(parsed({"--practice=-odd.iso"}).practiceImage, QStringLiteral("-odd.iso"));
    EXPECT_TRUE(parsed({"--practice=disc.iso"}).practice);
    EXPECT_FALSE(refused({"--practice="}).isEmpty());
    EXPECT_FALSE(refused({"--practices=disc.iso"}).isEmpty());
}

TEST(LaunchOptionsTest, AnOptionAfterPracticeIsNoFile) {
    const LaunchOptions options = parsed({"--practice", "--version"});
    EXPECT_TRUE(options.practice);
    EXPECT_TRUE(options.version);
    EXPECT_FALSE(options.practiceImage);
}

TEST(LaunchOptionsTest, WhatMakesNoSenseIsNamed) {
    EXPECT_TRUE(refused({"--frobnicate"}).contains(QStringLiteral("--frobnicate")));
    EXPECT_TRUE(refused({"disc.iso"}).contains(QStringLiteral("disc.iso")));
    EXPECT_TRUE(refused({"--practice", "a.iso", "b.iso"}).contains(QStringLiteral("b.iso")));
    EXPECT_FALSE(refused({""}).isEmpty());
}

TEST(LaunchOptionsTest, TheHelpNamesEveryOption) {
    for (const char* option : {"--practice", "--help", "--version"}) {
        EXPECT_TRUE(LaunchOptions::helpText().contains(QString::fromUtf8(option)));
    }
}

TEST(LaunchOptionsTest, TheManualPageNamesEveryOption) {
    QFile file(QStringLiteral(SPINDRIFT_MANUAL_PAGE));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll()).remove(QLatin1Char('\\'));
    QStringList options;
    auto matches = QRegularExpression(QStringLiteral("(?<![a-z])--?[a-zA-Z]+"))
                       .globalMatch(LaunchOptions::helpText());
    while (matches.hasNext()) {
        options.append(matches.next().captured());
        EXPECT_TRUE(page.contains(options.last())) << qPrintable(options.last());
    }
    options.removeDuplicates();
    options.sort();
    EXPECT_EQ(options, QStringList({"--help", "--practice", "--version", "-V", "-h"}));
}
