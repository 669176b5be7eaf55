#include "Preferences.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <memory>

#include "TestFolder.h"
#include "Waiting.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PreferencesTest : public testing::Test {
protected:
    QString file() const { return folder.path(QStringLiteral("config/Spindrift/Spindrift.conf")); }

    // The lines of the file, without empty ones.
    QStringList lines() const {
        return QString::fromUtf8(TestFolder::read(file()).value_or(QByteArray()))
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    void write(const QByteArray& settings) const {
        folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"), "[General]\n" + settings);
    }

    // A configuration folder of its own with such a file.
    void writeElsewhere(const QByteArray& settings) {
        const QString name = QStringLiteral("config-%1").arg(++m_elsewhere);
        folder.write(name + QStringLiteral("/Spindrift/Spindrift.conf"), settings);
        folder.setEnvironment("XDG_CONFIG_HOME", folder.path(name).toUtf8());
    }

    // Makes the preferences' folder impossible, for root too.
    void block() const {
        QDir(folder.path(QStringLiteral("config/Spindrift"))).removeRecursively();
        folder.write(QStringLiteral("config/Spindrift"), "in the way");
    }
    void unblock() const { QFile::remove(folder.path(QStringLiteral("config/Spindrift"))); }

    static QByteArray inAnotherProcess(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral(PREFERENCES_PROBE), arguments);
        EXPECT_TRUE(process.waitForFinished(60000));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
        return process.readAllStandardOutput().trimmed();
    }

    void watch(const Preferences& preferences, const QString& name) {
        QObject::connect(
            &preferences, &Preferences::changed, [this, &preferences, name](Preference preference) {
                changes << name + QLatin1Char(' ') + QLatin1String(rowOf(preference).key) +
                               (preferences.value(preference) ? QStringLiteral(" on")
                                                              : QStringLiteral(" off"));
            });
    }

    TestFolder folder;
    QStringList changes;

private:
    int m_elsewhere = 0;
};

TEST_F(PreferencesTest, AFreshUserHasEjectingOnAndTheRestOff) {
    const Preferences preferences;
    EXPECT_TRUE(preferences.value(Preference::EjectWhenDone));
    EXPECT_FALSE(preferences.value(Preference::ThoroughVerify));
    EXPECT_FALSE(preferences.value(Preference::RetroMode));
    EXPECT_FALSE(preferences.value(Preference::HasCompletedOnboarding));
    EXPECT_EQ(preferences.appleInterfaceStyle(), std::nullopt);
}

TEST_F(PreferencesTest, ReadingWritesNothing) {
    const Preferences preferences;
    preferences.value(Preference::EjectWhenDone);
    EXPECT_EQ(preferences.appleInterfaceStyle(), std::nullopt);
    EXPECT_THAT(TestFolder::list(folder.path(QStringLiteral("config"))), IsEmpty());
}

TEST_F(PreferencesTest, AWriteLiesInTheFileAtOnce) {
    Preferences preferences;
    preferences.set(Preference::EjectWhenDone, false);
    EXPECT_THAT(lines(), ElementsAre(u"[General]", u"ejectWhenDone=false"));
    preferences.set(Preference::ThoroughVerify, true);
    preferences.set(Preference::RetroMode, true);
    preferences.set(Preference::HasCompletedOnboarding, true);
    EXPECT_THAT(lines(), testing::UnorderedElementsAre(u"[General]", u"ejectWhenDone=false",
                                                       u"thoroughVerify=true", u"retroMode=true",
                                                       u"hasCompletedOnboarding=true"));
    EXPECT_THAT(TestFolder::list(folder.path(QStringLiteral("config/Spindrift"))),
                ElementsAre(u".Spindrift.lock", u"Spindrift.conf"));
}

TEST_F(PreferencesTest, AWriteOfTheDefaultLiesInTheFileToo) {
    Preferences preferences;
    preferences.set(Preference::EjectWhenDone, true);
    EXPECT_THAT(lines(), ElementsAre(u"[General]", u"ejectWhenDone=true"));
}

TEST_F(PreferencesTest, EveryPreferenceIsWrittenAndReadUnderItsOwnKey) {
    for (const PreferenceRow& row : preferenceTable) {
        for (const bool value : {false, true, false}) {
            Preferences().set(row.preference, value);
            EXPECT_EQ(Preferences().value(row.preference), value) << row.key;
            EXPECT_TRUE(lines().contains(QLatin1String(row.key) + QLatin1Char('=') +
                                         (value ? QLatin1String("true") : QLatin1String("false"))));
        }
    }
}

TEST_F(PreferencesTest, AWriteIsSeenAndSignalledByAllInstancesAtOnce) {
    Preferences one;
    Preferences two;
    watch(one, QStringLiteral("one"));
    watch(two, QStringLiteral("two"));
    one.set(Preference::RetroMode, true);
    EXPECT_THAT(changes, testing::UnorderedElementsAre(u"one retroMode on", u"two retroMode on"));
    changes.clear();
    two.set(Preference::EjectWhenDone, false);
    EXPECT_THAT(changes,
                testing::UnorderedElementsAre(u"one ejectWhenDone off", u"two ejectWhenDone off"));
}

TEST_F(PreferencesTest, TheSignalNamesThePreference) {
    Preferences preferences;
    watch(preferences, QStringLiteral("p"));
    preferences.set(Preference::EjectWhenDone, false);
    preferences.set(Preference::ThoroughVerify, true);
    preferences.set(Preference::RetroMode, true);
    preferences.set(Preference::HasCompletedOnboarding, true);
    EXPECT_THAT(changes, ElementsAre(u"p ejectWhenDone off", u"p thoroughVerify on",
                                     u"p retroMode on", u"p hasCompletedOnboarding on"));
}

TEST_F(PreferencesTest, AWriteOfTheSameValueIsNoChange) {
    Preferences preferences;
    watch(preferences, QStringLiteral("p"));
    preferences.set(Preference::EjectWhenDone, true);
    preferences.set(Preference::RetroMode, false);
    EXPECT_THAT(changes, IsEmpty());
    preferences.set(Preference::RetroMode, true);
    preferences.set(Preference::RetroMode, true);
    EXPECT_THAT(changes, ElementsAre(u"p retroMode on"));
}

TEST_F(PreferencesTest, AnInstanceThatAHandlerDeletedIsLeftAlone) {
    auto one = std::make_unique<Preferences>();
    auto two = std::make_unique<Preferences>();
    int handled = 0;
    // Whichever is told first takes the other with it.
    QObject::connect(one.get(), &Preferences::changed, [&] {
        ++handled;
        two.reset();
    });
    QObject::connect(two.get(), &Preferences::changed, [&] {
        ++handled;
        one.reset();
    });
    Preferences().set(Preference::RetroMode, true);
    EXPECT_EQ(handled, 1);
}

TEST_F(PreferencesTest, AnotherProcessSeesAWrite) {
    Preferences preferences;
    preferences.set(Preference::EjectWhenDone, false);
    EXPECT_EQ(inAnotherProcess({QStringLiteral("ejectWhenDone")}), "false");
    preferences.set(Preference::EjectWhenDone, true);
    EXPECT_EQ(inAnotherProcess({QStringLiteral("ejectWhenDone")}), "true");
}

TEST_F(PreferencesTest, AWriteOfAnotherProcessIsSeen) {
    const Preferences preferences;
    EXPECT_FALSE(preferences.value(Preference::ThoroughVerify));
    inAnotherProcess({QStringLiteral("thoroughVerify"), QStringLiteral("true")});
    EXPECT_TRUE(preferences.value(Preference::ThoroughVerify));
    inAnotherProcess({QStringLiteral("thoroughVerify"), QStringLiteral("false")});
    EXPECT_FALSE(preferences.value(Preference::ThoroughVerify));
}

TEST_F(PreferencesTest, ProcessesLeaveEachOthersKeysAlone) {
    Preferences preferences;
    preferences.set(Preference::RetroMode, true);
    inAnotherProcess({QStringLiteral("thoroughVerify"), QStringLiteral("true")});
    preferences.set(Preference::EjectWhenDone, false);
    EXPECT_TRUE(preferences.value(Preference::RetroMode));
    EXPECT_TRUE(preferences.value(Preference::ThoroughVerify));
    EXPECT_FALSE(preferences.value(Preference::EjectWhenDone));
}

TEST_F(PreferencesTest, WhatElseLiesInTheFileStays) {
    write("AppleInterfaceStyle=Dark\nunknown=7\n");
    Preferences().set(Preference::RetroMode, true);
    EXPECT_TRUE(lines().contains(QStringLiteral("AppleInterfaceStyle=Dark")));
    EXPECT_TRUE(lines().contains(QStringLiteral("unknown=7")));
    EXPECT_EQ(Preferences().appleInterfaceStyle(), QStringLiteral("Dark"));
}

TEST_F(PreferencesTest, ValuesWrittenByHandAreReadInTheUsualSpellings) {
    for (const char* spelling : {"true", "TRUE", "True", "1", "\" true \""}) {
        writeElsewhere("[General]\nretroMode=" + QByteArray(spelling) + "\n");
        EXPECT_TRUE(Preferences().value(Preference::RetroMode)) << spelling;
    }
    for (const char* spelling : {"false", "FALSE", "False", "0"}) {
        writeElsewhere("[General]\nejectWhenDone=" + QByteArray(spelling) + "\n");
        EXPECT_FALSE(Preferences().value(Preference::EjectWhenDone)) << spelling;
    }
}

TEST_F(PreferencesTest, AValueThatIsNoneFallsToTheDefault) {
    for (const char* garbage : {"", "yes", "2", "-1", "truefalse", "true, false", "@Invalid()",
                                "@ByteArray(x)", "\"", "\xff\xfe"}) {
        writeElsewhere("[General]\nejectWhenDone=" + QByteArray(garbage) +
                       "\nretroMode=" + garbage + "\n");
        EXPECT_TRUE(Preferences().value(Preference::EjectWhenDone)) << garbage;
        EXPECT_FALSE(Preferences().value(Preference::RetroMode)) << garbage;
    }
}

TEST_F(PreferencesTest, AFileThatIsNoSettingsFileLeavesTheDefaultsAndCanBeWritten) {
    for (const QByteArray& garbage :
         QList<QByteArray>{"garbage\n", QByteArray(3000, '\0'), "[[[\n=\n", "\xff\xd8\xff"}) {
        writeElsewhere(garbage);
        Preferences preferences;
        EXPECT_TRUE(preferences.value(Preference::EjectWhenDone));
        preferences.set(Preference::EjectWhenDone, false);
        EXPECT_FALSE(preferences.value(Preference::EjectWhenDone));
        EXPECT_EQ(inAnotherProcess({QStringLiteral("ejectWhenDone")}), "false");
    }
}

TEST_F(PreferencesTest, WhatCannotBeWrittenHoldsForThisProcess) {
    block();
    Preferences preferences;
    Preferences other;
    watch(other, QStringLiteral("other"));
    preferences.set(Preference::RetroMode, true);
    EXPECT_TRUE(preferences.value(Preference::RetroMode));
    EXPECT_TRUE(other.value(Preference::RetroMode));
    EXPECT_THAT(changes, ElementsAre(u"other retroMode on"));
    EXPECT_TRUE(Preferences().value(Preference::RetroMode));
    preferences.set(Preference::RetroMode, false);
    EXPECT_FALSE(other.value(Preference::RetroMode));
    EXPECT_THAT(changes, ElementsAre(u"other retroMode on", u"other retroMode off"));
    EXPECT_TRUE(preferences.value(Preference::EjectWhenDone));
}

TEST_F(PreferencesTest, AFileThatCanBeWrittenAgainIsBelievedAgain) {
    block();
    Preferences preferences;
    preferences.set(Preference::RetroMode, true);
    unblock();
    preferences.set(Preference::RetroMode, false);
    EXPECT_FALSE(preferences.value(Preference::RetroMode));
    EXPECT_THAT(lines(), testing::Contains(u"retroMode=false"));
    inAnotherProcess({QStringLiteral("retroMode"), QStringLiteral("true")});
    EXPECT_TRUE(preferences.value(Preference::RetroMode));
}

TEST_F(PreferencesTest, WhatCouldNotBeWrittenIsWrittenWithTheNextPreferenceThatCanBe) {
    const QString notSaved = QStringLiteral("The settings could not be saved: Not a directory.");
    Preferences preferences;
    EXPECT_EQ(preferences.problem(), std::nullopt);
    block();
    preferences.set(Preference::RetroMode, true);
    preferences.set(Preference::EjectWhenDone, false);
    EXPECT_EQ(preferences.problem(), notSaved);
    EXPECT_EQ(Preferences().problem(), notSaved);
    unblock();
    EXPECT_EQ(preferences.problem(), notSaved);
    preferences.set(Preference::ThoroughVerify, true);
    EXPECT_EQ(preferences.problem(), std::nullopt);
    EXPECT_THAT(lines(), testing::UnorderedElementsAre(u"[General]", u"ejectWhenDone=false",
                                                       u"retroMode=true", u"thoroughVerify=true"));
    // From here on the file is believed.
    inAnotherProcess({QStringLiteral("retroMode"), QStringLiteral("false")});
    EXPECT_FALSE(preferences.value(Preference::RetroMode));
}

TEST_F(PreferencesTest, AFileThatSomebodyRemovedLeavesTheDefaults) {
    Preferences preferences;
    preferences.set(Preference::EjectWhenDone, false);
    preferences.set(Preference::RetroMode, true);
    ASSERT_TRUE(QFile::remove(file()));
    EXPECT_TRUE(preferences.value(Preference::EjectWhenDone));
    EXPECT_FALSE(preferences.value(Preference::RetroMode));
    preferences.set(Preference::ThoroughVerify, true);
    EXPECT_THAT(lines(), ElementsAre(u"[General]", u"thoroughVerify=true"));
}

TEST_F(PreferencesTest, WhatCouldNotBeWrittenInOneFolderMeansNothingInAnother) {
    block();
    Preferences preferences;
    preferences.set(Preference::RetroMode, true);
    folder.setEnvironment("XDG_CONFIG_HOME", folder.path(QStringLiteral("other")).toUtf8());
    EXPECT_FALSE(preferences.value(Preference::RetroMode));
    EXPECT_EQ(preferences.problem(), std::nullopt);
}

TEST_F(PreferencesTest, TheFolderIsTheOneThatTheEnvironmentNamesNow) {
    Preferences preferences;
    preferences.set(Preference::RetroMode, true);
    folder.setEnvironment("XDG_CONFIG_HOME", folder.path(QStringLiteral("other")).toUtf8());
    EXPECT_FALSE(preferences.value(Preference::RetroMode));
    preferences.set(Preference::ThoroughVerify, true);
    EXPECT_TRUE(QFile::exists(folder.path(QStringLiteral("other/Spindrift/Spindrift.conf"))));
    folder.setEnvironment("XDG_CONFIG_HOME", folder.path(QStringLiteral("config")).toUtf8());
    EXPECT_TRUE(preferences.value(Preference::RetroMode));
    EXPECT_FALSE(preferences.value(Preference::ThoroughVerify));
}

TEST_F(PreferencesTest, WithoutAnAbsoluteFolderTheHomeFoldersIsUsed) {
    for (const auto& value : QList<std::optional<QByteArray>>{std::nullopt, "", "relative/path"}) {
        folder.setEnvironment("XDG_CONFIG_HOME", value);
        QFile::remove(folder.path(QStringLiteral("home/.config/Spindrift/Spindrift.conf")));
        Preferences().set(Preference::ThoroughVerify, true);
        EXPECT_TRUE(
            QFile::exists(folder.path(QStringLiteral("home/.config/Spindrift/Spindrift.conf"))));
    }
}

TEST_F(PreferencesTest, TheAppearanceKeyIsHandedBackAsItStands) {
    for (const char* style : {"Dark", "dark", "Light", "Something else"}) {
        writeElsewhere("[General]\nAppleInterfaceStyle=" + QByteArray(style) + "\n");
        EXPECT_EQ(Preferences().appleInterfaceStyle(), QLatin1String(style));
    }
    writeElsewhere("[General]\nAppleInterfaceStyle=\n");
    EXPECT_EQ(Preferences().appleInterfaceStyle(), QString());
}

TEST_F(PreferencesTest, OneThatFollowsTellsAllOfWhatAnotherProcessWrites) {
    Preferences follower;
    const Preferences other;
    watch(other, QStringLiteral("other"));
    follower.followOtherProcesses();
    inAnotherProcess({QStringLiteral("retroMode"), QStringLiteral("true")});
    ASSERT_TRUE(waitUntil([&] { return !changes.isEmpty(); }));
    EXPECT_THAT(changes, ElementsAre(u"other retroMode on"));
    // Of the same length, in the file's place and inside of the file.
    inAnotherProcess({QStringLiteral("ejectWhenDone"), QStringLiteral("false")});
    ASSERT_TRUE(waitUntil([&] { return changes.size() == 2; }));
    EXPECT_EQ(changes.last(), u"other ejectWhenDone off");
    write("retroMode=false\nejectWhenDone=false\n");
    ASSERT_TRUE(waitUntil([&] { return changes.size() == 3; }));
    EXPECT_EQ(changes.last(), u"other retroMode off");
}

TEST_F(PreferencesTest, OneThatFollowsTellsOfNothingTwice) {
    Preferences follower;
    watch(follower, QStringLiteral("follower"));
    follower.followOtherProcesses();
    follower.set(Preference::RetroMode, true);
    EXPECT_THAT(changes, ElementsAre(u"follower retroMode on"));
    inAnotherProcess({QStringLiteral("thoroughVerify"), QStringLiteral("true")});
    ASSERT_TRUE(waitUntil([&] { return changes.size() > 1; }));
    EXPECT_THAT(changes, ElementsAre(u"follower retroMode on", u"follower thoroughVerify on"));
}

TEST_F(PreferencesTest, WithoutAFolderThereIsNothingToFollow) {
    block();
    Preferences preferences;
    watch(preferences, QStringLiteral("one"));
    preferences.followOtherProcesses();
    preferences.set(Preference::RetroMode, true);
    EXPECT_TRUE(preferences.value(Preference::RetroMode));
    EXPECT_THAT(changes, ElementsAre(u"one retroMode on"));
}

TEST_F(PreferencesTest, WhatWasReadLastHoldsWhileTheFileCannotBeRead) {
    write("retroMode=true\n");
    const Preferences preferences;
    EXPECT_TRUE(preferences.value(Preference::RetroMode));
    ASSERT_TRUE(QFile::remove(file()));
    ASSERT_TRUE(QDir().mkpath(file()));
    EXPECT_TRUE(preferences.value(Preference::RetroMode));
    EXPECT_EQ(preferences.problem(),
              QStringLiteral("The settings could not be read: Is a directory."));
    ASSERT_TRUE(QDir().rmdir(file()));
    EXPECT_FALSE(preferences.value(Preference::RetroMode));
    EXPECT_EQ(preferences.problem(), std::nullopt);
}

TEST_F(PreferencesTest, AllAreToldOfAProblemAndOfItsEnd) {
    Preferences preferences;
    const Preferences other;
    QObject::connect(&other, &Preferences::problemChanged,
                     [&] { changes << other.problem().value_or(QStringLiteral("all is well")); });
    block();
    preferences.set(Preference::RetroMode, true);
    preferences.set(Preference::RetroMode, false);
    unblock();
    preferences.set(Preference::RetroMode, true);
    EXPECT_THAT(changes,
                ElementsAre(u"The settings could not be saved: Not a directory.", u"all is well"));
}

TEST_F(PreferencesTest, OneThatFollowsTellsThatTheFileCannotBeRead) {
    write("retroMode=true\n");
    Preferences follower;
    follower.followOtherProcesses();
    QObject::connect(&follower, &Preferences::problemChanged, [&] {
        changes << follower.problem().value_or(QStringLiteral("all is well"));
    });
    watch(follower, QStringLiteral("follower"));
    ASSERT_TRUE(QDir().rename(file(), folder.path(QStringLiteral("aside"))));
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf/in"), "the way");
    ASSERT_TRUE(waitUntil([&] {
        return changes.contains(QStringLiteral("The settings could not be read: Is a directory."));
    }));
    EXPECT_EQ(QDir(file()).removeRecursively(), true);
    ASSERT_TRUE(waitUntil([&] { return changes.contains(QStringLiteral("all is well")); }));
}

}  // namespace
