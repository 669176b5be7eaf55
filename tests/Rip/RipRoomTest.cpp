#include "RipRoom.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "SmallFileSystem.h"
#include "TestFolder.h"

namespace {

constexpr qint64 mega = 1000 * 1000;
constexpr qint64 endless = 1000 * 1000 * mega;

RipRoom::Place temporary(qint64 freeMegabytes, qint64 longestFile = endless) {
    return {"/tmp", 1, freeMegabytes * mega, longestFile};
}

RipRoom::Place destination(qint64 freeMegabytes, qint64 longestFile = endless) {
    return {"/images", 2, freeMegabytes * mega, longestFile};
}

RipRoom::Place sameDisk(qint64 freeMegabytes) {
    return {"/images", 1, freeMegabytes * mega, endless};
}

RipRoom::Rip plain(qint64 replaced = 0) {
    return {100 * mega, false, replaced * mega};
}

RipRoom::Rip thorough(qint64 replaced = 0) {
    return {100 * mega, true, replaced * mega};
}

// "FOLDER", with ": OBJECTION" where there is one.
std::string planned(const RipRoom::Rip& rip, const RipRoom::Place& temporary,
                    const RipRoom::Place& destination) {
    const auto plan = RipRoom::plan(rip, temporary, destination);
    const QString objection = plan.objection ? QStringLiteral(": ") + *plan.objection : QString();
    return plan.temporaryFolder.toStdString() + objection.toStdString();
}

TEST(RipRoomTest, WithRoomForTheImageInBothPlacesThereIsNoObjection) {
    EXPECT_EQ(planned(plain(), temporary(100), destination(100)), "/tmp");
    EXPECT_EQ(planned(thorough(), temporary(100), destination(100)), "/tmp");
    EXPECT_EQ(planned(plain(), sameDisk(100), sameDisk(100)), "/images");
}

TEST(RipRoomTest, ADestinationThatIsTooSmallIsToldWithWhatItLacks) {
    EXPECT_EQ(planned(plain(), temporary(1000), destination(30)),
              "/tmp: “/images” lacks 70 MB of room for the image, which takes 100 MB. Choose a "
              "folder with more room.");
    EXPECT_EQ(planned(plain(), temporary(99), sameDisk(99)),
              "/tmp: “/images” lacks 1 MB of room for the image, which takes 100 MB. Choose a "
              "folder with more room.");
}

TEST(RipRoomTest, AFileThatIsReplacedCountsAsRoomOnAnotherDisk) {
    EXPECT_EQ(planned(plain(70), temporary(1000), destination(30)), "/tmp");
    EXPECT_EQ(planned(plain(69), temporary(1000), destination(30)).substr(0, 30),
              "/tmp: “/images” lacks 1 MB");
}

TEST(RipRoomTest, OnOneDiskTheImageIsWholeBeforeItReplacesAnything) {
    EXPECT_NE(planned(plain(100), temporary(99), sameDisk(99)), "/tmp");
    EXPECT_EQ(planned(plain(), temporary(100), sameDisk(100)), "/tmp");
}

TEST(RipRoomTest, AThoroughRipNeedsTwoImagesOnOneDisk) {
    EXPECT_EQ(planned(thorough(), temporary(200), sameDisk(200)), "/tmp");
    EXPECT_EQ(planned(thorough(), temporary(150), sameDisk(150)),
              "/tmp: “/images” lacks 50 MB of room for the second image of a thorough "
              "verification, which takes 100 MB, too. Choose a folder with more room, or set "
              "TMPDIR to a folder on another file system.");
    EXPECT_EQ(planned(thorough(50), temporary(150), sameDisk(150)), "/tmp");
}

TEST(RipRoomTest, WhereOnlyTheDestinationHasRoomTheTemporaryImagesGoThere) {
    EXPECT_EQ(planned(plain(), temporary(99), destination(100)), "/images");
    EXPECT_EQ(planned(thorough(), temporary(99), destination(200)), "/images");
    EXPECT_EQ(planned(plain(), temporary(1000, 99 * mega), destination(100)), "/images");
}

TEST(RipRoomTest, ATemporaryFolderThatIsTooSmallIsToldWhereTheDestinationCannotHelp) {
    const std::string sentence =
        "/tmp: “/tmp” lacks 90 MB of room for the temporary image, which takes 100 MB. Set TMPDIR "
        "to a folder with more room, or choose another destination.";
    EXPECT_EQ(planned(thorough(), temporary(10), destination(150)), sentence);
    EXPECT_EQ(planned(plain(50), temporary(10), destination(99)), sentence);
}

TEST(RipRoomTest, AFileSystemWhoseFilesAreTooShortIsTold) {
    EXPECT_EQ(planned(plain(), temporary(1000), destination(1000, 99 * mega)),
              "/tmp: No file in “/images” can be as large as the image, which takes 100 MB. Choose "
              "a folder on another file system.");
    EXPECT_EQ(planned(thorough(), temporary(1000, 99 * mega), destination(150)),
              "/tmp: No file in “/tmp” can be as large as the image, which takes 100 MB. Set "
              "TMPDIR to a folder on another file system.");
}

TEST(RipRoomTest, TheFileSystemsAreAskedWhatTheyHave) {
    TestFolder folder;
    const QString small = folder.path(QStringLiteral("small"));
    QDir().mkpath(small);
    const SmallFileSystem disk(small, "1m");
    NEEDS_A_SMALL_FILE_SYSTEM(disk);
    const QString image = folder.write(QStringLiteral("small/disc.iso"), QByteArray(700'000, 'x'));
    const auto objection = [&](qint64 bytes, Replacing replacing) {
        return RipRoom::plan(bytes, false, image, replacing).objection.has_value();
    };
    EXPECT_FALSE(objection(300'000, Replacing::No));
    EXPECT_TRUE(objection(900'000, Replacing::No));
    EXPECT_FALSE(objection(900'000, Replacing::Yes));
    EXPECT_TRUE(objection(1'100'000, Replacing::Yes));
    folder.setEnvironment("TMPDIR", small.toUtf8());
    EXPECT_EQ(RipRoom::plan(900'000, false, folder.path("disc.iso"), Replacing::No).temporaryFolder,
              folder.path());
}

TEST(RipRoomTest, WhatIsNotKnownIsNoObjection) {
    const TestFolder folder;
    for (const auto& [bytes, path] :
         {std::pair(std::optional<qint64>(), "disc.iso"),
          std::pair(std::optional<qint64>(endless * 1000), "no/such/disc.iso")}) {
        const auto plan = RipRoom::plan(bytes, true, folder.path(path), Replacing::Yes);
        EXPECT_EQ(plan.objection, std::nullopt);
        EXPECT_EQ(plan.temporaryFolder, folder.path(QStringLiteral("tmp")));
    }
}

}  // namespace
