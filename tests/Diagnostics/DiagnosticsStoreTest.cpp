#include "DiagnosticsStore.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTimeZone>
#include <atomic>
#include <cmath>
#include <future>
#include <nlohmann/json.hpp>
#include <thread>

#include "OrdinaryUser.h"
#include "SmallFileSystem.h"
#include "StubTools.h"
#include "TestFolder.h"

namespace {

class DiagnosticsStoreTest : public testing::Test {
protected:
    static SpeedTestResult result(qint64 size) {
        auto made = SpeedTestResult::now(QStringLiteral("a|b|c"), QStringLiteral("a b c"),
                                         QStringLiteral("CD"), size, 150000,
                                         SpeedTestResult::Source::speedTest);
        // What a file keeps: whole seconds.
        made.date = QDateTime::fromSecsSinceEpoch(made.date.toSecsSinceEpoch(), QTimeZone::utc());
        return made;
    }
    static nlohmann::json json(const QString& path) {
        return nlohmann::json::parse(TestFolder::read(path).value_or(QByteArray()).toStdString());
    }

    TestFolder folder;
    const QString application = folder.path(QStringLiteral("data/Spindrift"));
    const QString resultsPath = application + QStringLiteral("/speedlog.json");
    const QString nicknamesPath = application + QStringLiteral("/drivenicknames.json");
    const DriveIdentity drive{QStringLiteral("PIONEER"), QStringLiteral("BDR-212M"),
                              QStringLiteral("1.00")};
};

TEST_F(DiagnosticsStoreTest, ANewStoreMakesItsFolderAndNoFile) {
    folder.setEnvironment("XDG_DATA_HOME", folder.path(QStringLiteral("deep/data")).toUtf8());
    const DiagnosticsStore store;
    EXPECT_EQ(TestFolder::list(folder.path(QStringLiteral("deep/data/Spindrift"))), QStringList());
    EXPECT_TRUE(QDir(folder.path(QStringLiteral("deep/data/Spindrift"))).exists());
    EXPECT_EQ(store.results(), QList<SpeedTestResult>());
    EXPECT_TRUE(store.nicknames().isEmpty());
}

TEST_F(DiagnosticsStoreTest, TheFilesHaveTheirNames) {
    const DiagnosticsStore store;
    EXPECT_EQ(store.resultsPath(), resultsPath);
    EXPECT_EQ(store.nicknamesPath(), nicknamesPath);
}

TEST_F(DiagnosticsStoreTest, WithoutADataFolderTheTemporaryOneServes) {
    EXPECT_EQ(DiagnosticsStore::applicationFolder(std::nullopt),
              folder.temporary() + QStringLiteral("Spindrift"));
    EXPECT_TRUE(QDir(folder.temporary() + QStringLiteral("Spindrift")).exists());
}

TEST_F(DiagnosticsStoreTest, InTheTemporaryFolderTheFolderIsTheUsersAlone) {
    const QString made = folder.temporary() + QStringLiteral("Spindrift");
    const QByteArray path = QFile::encodeName(made);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(DiagnosticsStore::applicationFolder(std::nullopt), made);
        struct stat status = {};
        ASSERT_EQ(stat(path.constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0700U);
        ASSERT_EQ(chmod(path.constData(), 0777), 0);  // as an older one may be
    }
    ASSERT_TRUE(QDir(made).removeRecursively());
    QDir().mkpath(folder.path(QStringLiteral("elsewhere")));
    ASSERT_TRUE(QFile::link(folder.path(QStringLiteral("elsewhere")), made));
    EXPECT_EQ(DiagnosticsStore::applicationFolder(std::nullopt), QStringLiteral("/dev/null"));
}

TEST_F(DiagnosticsStoreTest, TheFirstNicknameWritesTheFile) {
    DiagnosticsStore store;
    store.setNickname(QStringLiteral("Desk"), drive);
    EXPECT_EQ(json(nicknamesPath), nlohmann::json({{"PIONEER|BDR-212M|1.00", "Desk"}}));
    EXPECT_FALSE(QFile::exists(resultsPath));
}

TEST_F(DiagnosticsStoreTest, ANicknameIsFoundUnderItsDrive) {
    DiagnosticsStore store;
    EXPECT_EQ(store.nickname(drive), std::nullopt);
    store.setNickname(QStringLiteral("Desk"), drive);
    EXPECT_EQ(store.nickname(drive), QStringLiteral("Desk"));
    EXPECT_EQ(DiagnosticsStore().nickname(drive), QStringLiteral("Desk"));
}

TEST_F(DiagnosticsStoreTest, DrivesThatDifferInFirmwareHaveTheirOwnNicknames) {
    DiagnosticsStore store;
    DriveIdentity newer = drive;
    newer.revision = QStringLiteral("1.01");
    store.setNickname(QStringLiteral("old"), drive);
    store.setNickname(QStringLiteral("new"), newer);
    EXPECT_EQ(store.nickname(drive), QStringLiteral("old"));
    EXPECT_EQ(store.nickname(newer), QStringLiteral("new"));
    EXPECT_EQ(store.nicknames().size(), 2);
}

TEST_F(DiagnosticsStoreTest, ADriveWithoutAnyIdentityHasAKeyToo) {
    DiagnosticsStore store;
    store.setNickname(QStringLiteral("nameless"), DriveIdentity());
    EXPECT_EQ(store.nicknames().keys(), QStringList({"||"}));
}

TEST_F(DiagnosticsStoreTest, BlanksAndTabsAroundANicknameAreDropped) {
    DiagnosticsStore store;
    store.setNickname(QStringLiteral("  Office burner \t"), drive);
    EXPECT_EQ(store.nickname(drive), QStringLiteral("Office burner"));
    store.setNickname(QStringLiteral("\u00a0\u3000Office\u2003"), drive);
    EXPECT_EQ(store.nickname(drive), QStringLiteral("Office"));
}

TEST_F(DiagnosticsStoreTest, ALineBreakAtTheEndOfANicknameStays) {
    DiagnosticsStore store;
    store.setNickname(QStringLiteral(" Desk\n"), drive);
    EXPECT_EQ(store.nickname(drive), QStringLiteral("Desk\n"));
    store.setNickname(QStringLiteral("\n"), drive);
    EXPECT_EQ(DiagnosticsStore().nickname(drive), QStringLiteral("\n"));
}

TEST_F(DiagnosticsStoreTest, ANicknameOfBlanksRemovesItAndRewritesTheFile) {
    DiagnosticsStore store;
    store.setNickname(QStringLiteral("Desk"), drive);
    store.setNickname(QStringLiteral("   "), drive);
    EXPECT_EQ(store.nickname(drive), std::nullopt);
    EXPECT_EQ(TestFolder::read(nicknamesPath), QByteArray("{}"));
}

TEST_F(DiagnosticsStoreTest, TheFileIsRewrittenEvenWhenNothingChanged) {
    DiagnosticsStore store;
    store.setNickname(QString(), drive);
    EXPECT_EQ(TestFolder::read(nicknamesPath), QByteArray("{}"));
    folder.write(QStringLiteral("data/Spindrift/drivenicknames.json"), "somebody else's");
    store.setNickname(QString(), drive);
    EXPECT_EQ(TestFolder::read(nicknamesPath), QByteArray("{}"));
}

TEST_F(DiagnosticsStoreTest, OddNicknamesComeBack) {
    for (const char16_t* odd :
         {u"\u00e4\u65e5\U0001F4BF", u"\"quoted\" \\ /", u"a\tb\nc", u"\u2028", u"<b>&"}) {
        const QString name = QChar(QChar::ByteOrderMark) + QString::fromUtf16(odd);
        const DriveIdentity maker{name, name, name};
        DiagnosticsStore().setNickname(name, maker);
        EXPECT_EQ(DiagnosticsStore().nickname(maker), name);
    }
}

TEST_F(DiagnosticsStoreTest, ALoneSurrogateInANicknameStaysInMemoryAndIsReplacedInTheFile) {
    DiagnosticsStore store;
    const QString name = u'a' + QString(QChar(0xDC00));
    store.setNickname(name, drive);
    EXPECT_EQ(store.nickname(drive), name);
    EXPECT_EQ(DiagnosticsStore().nickname(drive), QStringLiteral("a?"));
}

TEST_F(DiagnosticsStoreTest, TheNewestResultComesFirst) {
    DiagnosticsStore store;
    const QList<SpeedTestResult> made = {result(1), result(2), result(3)};
    for (const auto& each : made) {
        store.record(each);
    }
    EXPECT_EQ(store.results(), QList<SpeedTestResult>({made[2], made[1], made[0]}));
    EXPECT_EQ(json(resultsPath).at(0).at("discSizeBytes"), 3);
    EXPECT_EQ(json(resultsPath).size(), 3U);
    EXPECT_EQ(DiagnosticsStore().results(), store.results());
    EXPECT_FALSE(QFile::exists(nicknamesPath));
}

TEST_F(DiagnosticsStoreTest, ThereIsNoLimitToTheHistory) {
    DiagnosticsStore store;
    for (int i = 0; i < 300; ++i) {
        store.record(result(i));
    }
    EXPECT_EQ(DiagnosticsStore().results().size(), 300);
}

TEST_F(DiagnosticsStoreTest, ABrokenHistoryStaysUntilTheNextResultReplacesIt) {
    folder.write(QStringLiteral("data/Spindrift/speedlog.json"), "not JSON");
    DiagnosticsStore store;
    EXPECT_EQ(store.results(), QList<SpeedTestResult>());
    store.setNickname(QStringLiteral("Desk"), drive);
    EXPECT_EQ(TestFolder::read(resultsPath), QByteArray("not JSON"));
    store.record(result(1));
    EXPECT_EQ(json(resultsPath).size(), 1U);
}

TEST_F(DiagnosticsStoreTest, OneBadResultEmptiesTheHistory) {
    DiagnosticsStore store;
    store.record(result(1));
    store.record(result(2));
    auto document = json(resultsPath);
    document[1].erase("discKind");
    folder.write(QStringLiteral("data/Spindrift/speedlog.json"),
                 QByteArray::fromStdString(document.dump()));
    EXPECT_EQ(DiagnosticsStore().results(), QList<SpeedTestResult>());
}

TEST_F(DiagnosticsStoreTest, NicknamesInAnyOtherFormCountAsNone) {
    for (const char* other : {"", "[]", "[\"a\"]", "null", "{\"a\":1}", "{\"a\":\"b\",\"c\":null}",
                              "{\"a\":\"b\"", "{\"a\":\"\xFF\"}", "x"}) {
        folder.write(QStringLiteral("data/Spindrift/drivenicknames.json"), other);
        EXPECT_TRUE(DiagnosticsStore().nicknames().isEmpty()) << other;
        EXPECT_EQ(TestFolder::read(nicknamesPath), QByteArray(other));
    }
}

TEST_F(DiagnosticsStoreTest, ABrokenFileOfOneKindLeavesTheOther) {
    DiagnosticsStore().record(result(1));
    folder.write(QStringLiteral("data/Spindrift/drivenicknames.json"), "[]");
    EXPECT_EQ(DiagnosticsStore().results().size(), 1);
}

TEST_F(DiagnosticsStoreTest, WhatCannotBeWrittenStaysInMemoryAndHarmsNoFile) {
    DiagnosticsStore store;
    QDir().mkpath(resultsPath + QStringLiteral("/precious"));
    QDir().mkpath(nicknamesPath);
    store.record(result(1));
    store.setNickname(QStringLiteral("Desk"), drive);
    EXPECT_EQ(store.results().size(), 1);
    EXPECT_EQ(store.nickname(drive), QStringLiteral("Desk"));
    EXPECT_TRUE(QDir(resultsPath + QStringLiteral("/precious")).exists());
}

TEST_F(DiagnosticsStoreTest, AFolderThatCannotBeMadeKeepsTheStateInMemory) {
    folder.write(QStringLiteral("data/Spindrift"), "a file in the folder's place");
    DiagnosticsStore store;
    store.record(result(1));
    store.setNickname(QStringLiteral("Desk"), drive);
    EXPECT_EQ(store.results().size(), 1);
    EXPECT_EQ(store.nickname(drive), QStringLiteral("Desk"));
    EXPECT_EQ(TestFolder::read(application), QByteArray("a file in the folder's place"));
}

TEST_F(DiagnosticsStoreTest, InAReadOnlyFolderTheStateStaysInMemoryAndNoFileIsLost) {
    DiagnosticsStore().record(result(1));
    const QByteArray before = *TestFolder::read(resultsPath);
    ASSERT_EQ(chmod(QFile::encodeName(resultsPath).constData(), 0400), 0);
    ASSERT_EQ(chmod(QFile::encodeName(application).constData(), 0500), 0);
    {
        const OrdinaryUser user(
            {folder.path(), folder.path(QStringLiteral("data")), application, resultsPath});
        DiagnosticsStore store;
        store.record(result(2));
        store.setNickname(QStringLiteral("Desk"), drive);
        EXPECT_EQ(store.results().size(), 2);
        EXPECT_EQ(store.nickname(drive), QStringLiteral("Desk"));
    }
    EXPECT_EQ(TestFolder::read(resultsPath), before);
    EXPECT_FALSE(QFile::exists(nicknamesPath));
    ASSERT_EQ(chmod(QFile::encodeName(application).constData(), 0700), 0);
}

TEST_F(DiagnosticsStoreTest, OnAFullDiskTheStateStaysInMemoryAndTheFilesStayWhole) {
    QDir().mkpath(application);
    const SmallFileSystem disk(application, "256k");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    DiagnosticsStore store;
    store.record(result(1));
    store.setNickname(QStringLiteral("Desk"), drive);
    QFile filler(application + QStringLiteral("/filler"));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'x')) > 0) {
    }
    for (int number = 2; number <= 60; ++number) {
        store.record(result(number));
    }
    store.setNickname(QString(10000, u'x'), drive);
    EXPECT_EQ(store.results().size(), 60);
    const DiagnosticsStore next;
    EXPECT_GE(next.results().size(), 1);
    EXPECT_LT(next.results().size(), 60);
    EXPECT_EQ(next.nickname(drive), QStringLiteral("Desk"));
}

TEST_F(DiagnosticsStoreTest, ASpeedWithoutAJsonFormLosesNoFile) {
    DiagnosticsStore store;
    store.record(result(1));
    auto endless = result(2);
    endless.averageBytesPerSecond = HUGE_VAL;
    store.record(endless);
    EXPECT_EQ(store.results().size(), 2);
    EXPECT_EQ(json(resultsPath).size(), 1U);
}

TEST_F(DiagnosticsStoreTest, FilesAreWrittenInPlace) {
    DiagnosticsStore store;
    store.record(result(1));
    const QString elsewhere = folder.path(QStringLiteral("elsewhere.json"));
    ASSERT_TRUE(QFile::rename(resultsPath, elsewhere));
    ASSERT_TRUE(QFile::link(elsewhere, resultsPath));
    store.record(result(2));
    EXPECT_TRUE(QFileInfo(resultsPath).isSymLink());
    EXPECT_EQ(json(elsewhere).size(), 2U);
    EXPECT_EQ(TestFolder::list(application), QStringList({".lock", "speedlog.json"}));
}

TEST_F(DiagnosticsStoreTest, AShorterDocumentLeavesNothingOfTheLongerOne) {
    DiagnosticsStore store;
    store.setNickname(QString(500, u'x'), drive);
    store.setNickname(QStringLiteral("y"), drive);
    EXPECT_EQ(json(nicknamesPath).begin().value(), "y");
}

TEST_F(DiagnosticsStoreTest, ChangesOfOtherProgramsAreOverwritten) {
    DiagnosticsStore store;
    folder.write(QStringLiteral("data/Spindrift/speedlog.json"), *encodeHistory({result(2)}));
    folder.write(QStringLiteral("data/Spindrift/drivenicknames.json"), R"({"x||": "Other"})");
    store.record(result(1));
    store.setNickname(QStringLiteral("Desk"), drive);
    const DiagnosticsStore next;
    ASSERT_EQ(next.results().size(), 1);
    EXPECT_EQ(next.results().at(0).discSizeBytes, 1);
    EXPECT_EQ(next.nicknames().values(), QStringList{"Desk"});
}

TEST_F(DiagnosticsStoreTest, WhatIsRecordedAloneIsAddedToWhatOtherProgramsHaveWritten) {
    folder.write(QStringLiteral("data/Spindrift/speedlog.json"), *encodeHistory({result(2)}));
    DiagnosticsStore::recordAlone(result(1));
    const auto results = DiagnosticsStore().results();
    ASSERT_EQ(results.size(), 2);
    EXPECT_EQ(results.at(0).discSizeBytes, 1);
    EXPECT_EQ(results.at(1).discSizeBytes, 2);
}

TEST_F(DiagnosticsStoreTest, OnlyOneHoldsTheLockAtATime) {
    Descriptor held = DiagnosticsStore::lockFiles();
    ASSERT_TRUE(held.isOpen());
    const Descriptor other(open(
        QFile::encodeName(application + QStringLiteral("/.lock")).constData(), O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(other.isOpen());
    EXPECT_NE(flock(other.number(), LOCK_EX | LOCK_NB), 0);
    held.close();
    EXPECT_EQ(flock(other.number(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(DiagnosticsStoreTest, AWindowsRecordWaitsForWhoeverReadsAndWrites) {
    Descriptor held = DiagnosticsStore::lockFiles();
    ASSERT_TRUE(held.isOpen());
    std::promise<void> begun;
    std::atomic<bool> isFree = false;
    bool wasFree = false;
    std::thread window([&] {
        DiagnosticsStore store;
        begun.set_value();
        store.record(result(1));
        wasFree = isFree;
    });
    begun.get_future().wait();
    // Long enough for a record that does not wait.
    for (int round = 0; round < 1000; ++round) {
        EXPECT_FALSE(encodeHistory({result(2)})->isEmpty());
    }
    isFree = true;
    held.close();
    window.join();
    EXPECT_TRUE(wasFree);
    EXPECT_EQ(DiagnosticsStore().results().size(), 1);
}

TEST_F(DiagnosticsStoreTest, WithoutAPlaceForTheLockThereIsNone) {
    folder.write(QStringLiteral("data/Spindrift"), "a file in the folder's place");
    EXPECT_FALSE(DiagnosticsStore::lockFiles().isOpen());
    DiagnosticsStore::recordAlone(result(1));
}

TEST_F(DiagnosticsStoreTest, TwoWindowsKeepBothTheirRips) {
    DiagnosticsStore first;
    DiagnosticsStore second;
    int changes = 0;
    QObject::connect(&first, &DiagnosticsStore::resultsChanged, &first, [&] { ++changes; });
    second.record(result(2));
    EXPECT_EQ(changes, 1) << "shown at once";
    first.record(result(1));
    for (const auto& results : {first.results(), second.results(), DiagnosticsStore().results()}) {
        ASSERT_EQ(results.size(), 2);
        EXPECT_EQ(results.at(0).discSizeBytes, 1);
        EXPECT_EQ(results.at(1).discSizeBytes, 2);
    }
}

TEST_F(DiagnosticsStoreTest, TwoWindowsKeepBothTheirNicknames) {
    DriveIdentity other = drive;
    other.product = QStringLiteral("Other");
    DiagnosticsStore first;
    first.setNickname(QStringLiteral("Gone"), drive);
    {
        DiagnosticsStore closed;
        closed.setNickname(QStringLiteral("Desk"), drive);
    }
    DiagnosticsStore second;
    second.setNickname(QStringLiteral("Shelf"), other);
    EXPECT_EQ(first.nickname(drive), QStringLiteral("Desk"));
    EXPECT_EQ(first.nickname(other), QStringLiteral("Shelf"));
    first.setNickname(QString(), drive);
    EXPECT_EQ(second.nicknames().values(), QStringList{"Shelf"});
    EXPECT_EQ(DiagnosticsStore().nicknames(), first.nicknames());
}

TEST_F(DiagnosticsStoreTest, StoresOfDifferentFoldersShareNothing) {
    DiagnosticsStore here;
    folder.setEnvironment("XDG_DATA_HOME", folder.path(QStringLiteral("elsewhere")).toUtf8());
    DiagnosticsStore there;
    there.record(result(1));
    there.setNickname(QStringLiteral("Desk"), drive);
    EXPECT_EQ(here.results(), QList<SpeedTestResult>());
    EXPECT_TRUE(here.nicknames().isEmpty());
}

TEST_F(DiagnosticsStoreTest, ChangesArePublished) {
    DiagnosticsStore store;
    QStringList signalled;
    QObject::connect(&store, &DiagnosticsStore::objectWillChange, &store,
                     [&] { signalled.append(QStringLiteral("will")); });
    QObject::connect(&store, &DiagnosticsStore::resultsChanged, &store,
                     [&] { signalled.append(QStringLiteral("results")); });
    QObject::connect(&store, &DiagnosticsStore::nicknamesChanged, &store,
                     [&] { signalled.append(QStringLiteral("nicknames")); });
    store.record(result(1));
    store.setNickname(QStringLiteral("Desk"), drive);
    store.setNickname(QStringLiteral("Desk"), drive);
    EXPECT_EQ(signalled, QStringList({"will", "results", "will", "nicknames", "will"}));
}

}  // namespace
