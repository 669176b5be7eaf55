#include "DriveQuery.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "FakeMachine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Wanted = DriveQuery::Wanted;

constexpr std::uint64_t dualLayerBytes = 8'543'666'176;

class DriveQueryTest : public testing::Test {
protected:
    Result<DriveFacts> byDefault(Wanted wanted = Wanted::TypeAndName) {
        return query.defaultDrive(wanted);
    }
    Result<DriveFacts> named(const std::string& device) {
        return query.drive(device, Wanted::TypeAndName);
    }
    MediumFacts opticalMedium(std::uint16_t profile, std::uint64_t bytes) {
        MediumFacts medium;
        medium.present = true;
        medium.optical = true;
        medium.profile = profile;
        medium.bytes = bytes;
        return medium;
    }

    FakeMachine machine;
    FakeDevices devices;
    DriveQuery query{machine.paths(), devices};
};

Failure noDrive() {
    return {Failure::Kind::NoDrive, "No optical drive found."};
}

TEST_F(DriveQueryTest, WithoutADriveTheFailureIsThatThereIsNone) {
    EXPECT_EQ(byDefault(), noDrive());
}

TEST_F(DriveQueryTest, WithTheRecordTheDeviceIsNeverAsked) {
    machine.addDrive("sr0", "11:0", dualLayerBytes);
    machine.setRecord("11:0", dualLayerRecord);
    const DriveFacts expected{"sr0", "HL-DT-ST", "DVDRAM GP65NB60", "RF00",
                              DiscFacts{"DVD+R DL", "My Disc", dualLayerBytes, false, false}};
    EXPECT_EQ(byDefault(Wanted::Type), expected);
    EXPECT_EQ(byDefault(Wanted::TypeAndName), expected);
    EXPECT_EQ(named("/dev/sr0"), expected);
    EXPECT_THAT(devices.questions, IsEmpty());
}

TEST_F(DriveQueryTest, ARecordWithoutADiscMeansAnEmptyTrayWithoutAskingTheDevice) {
    machine.addDrive("sr0", "11:0", dualLayerBytes);
    machine.setRecord("11:0", "I:1\nE:ID_CDROM=1\nE:ID_CDROM_DVD=1\n");
    const auto drive = byDefault();
    ASSERT_TRUE(drive);
    EXPECT_EQ(drive->disc, std::nullopt);
    EXPECT_THAT(devices.questions, IsEmpty());
}

TEST_F(DriveQueryTest, ARecordedAudioDiscIsAsLargeAsItsFrames) {
    machine.addDrive("sr0", "11:0", 1000 * 2048);
    machine.setRecord("11:0",
                      "E:ID_CDROM=1\nE:ID_CDROM_CD=1\nE:ID_CDROM_MEDIA=1\nE:ID_CDROM_MEDIA_CD_R=1\n"
                      "E:ID_CDROM_MEDIA_TRACK_COUNT_AUDIO=12\n");
    const auto drive = byDefault(Wanted::Type);
    ASSERT_TRUE(drive);
    EXPECT_EQ(drive->disc, (DiscFacts{"CD-R", "Audio CD", 1000 * 2352, true, false}));
}

TEST_F(DriveQueryTest, ARecordedDiscOfSoundAndDataIsAsLargeAsItsDataOrOfUnknownSize) {
    const std::string record =
        "E:ID_CDROM=1\nE:ID_CDROM_CD=1\nE:ID_CDROM_MEDIA=1\nE:ID_CDROM_MEDIA_CD=1\n"
        "E:ID_CDROM_MEDIA_TRACK_COUNT_AUDIO=12\nE:ID_CDROM_MEDIA_TRACK_COUNT_DATA=1\n"
        "E:ID_FS_LABEL_ENC=EXTRA\n";
    machine.addDrive("sr0", "11:0", 1000 * 2048);
    machine.setRecord("11:0", record + "E:ID_CDROM_MEDIA_SESSION_LAST_OFFSET=1228800\n");
    auto drive = byDefault();
    ASSERT_TRUE(drive);
    EXPECT_EQ(drive->disc, (DiscFacts{"CD-ROM", "EXTRA", 400 * 2048, false, false}));
    machine.setRecord("11:0", record);
    drive = byDefault();
    ASSERT_TRUE(drive);
    EXPECT_EQ(drive->disc, (DiscFacts{"CD-ROM", "EXTRA", std::nullopt, false, false}));
    EXPECT_THAT(devices.questions, IsEmpty());
}

TEST_F(DriveQueryTest, ARecordedBlankDiscHasItsTypeAndNoBytes) {
    machine.addDrive("sr0", "11:0", 1'073'741'312);
    machine.setRecord("11:0",
                      "E:ID_CDROM=1\nE:ID_CDROM_CD=1\nE:ID_CDROM_MEDIA=1\n"
                      "E:ID_CDROM_MEDIA_CD_RW=1\nE:ID_CDROM_MEDIA_STATE=blank\n");
    const auto drive = byDefault();
    ASSERT_TRUE(drive);
    EXPECT_EQ(drive->disc, (DiscFacts{"CD-RW", "", 0, false, true}));
}

TEST_F(DriveQueryTest, WithoutARecordTheDeviceIsAskedForTypeSizeAndLabel) {
    machine.addDrive("sr0", "11:0");
    devices.media["sr0"] = opticalMedium(0x2B, dualLayerBytes);
    devices.labels["sr0"] = "Label";
    const auto drive = byDefault();
    ASSERT_TRUE(drive);
    EXPECT_EQ(drive->disc, (DiscFacts{"DVD+R DL", "Label", dualLayerBytes, false, false}));
    EXPECT_THAT(devices.questions, ElementsAre("medium sr0", "label sr0"));
}

TEST_F(DriveQueryTest, TheDiscIsNotReadForItsLabelWhenOnlyTheTypeIsWanted) {
    machine.addDrive("sr0", "11:0");
    devices.media["sr0"] = opticalMedium(0x08, 2048);
    ASSERT_TRUE(byDefault(Wanted::Type));
    EXPECT_THAT(devices.questions, ElementsAre("medium sr0"));
}

TEST_F(DriveQueryTest, ARecordThatNoHelperFilledIsNotTrustedToKnowOfTheDisc) {
    machine.addDrive("sr0", "11:0");
    machine.setRecord("11:0", "I:1\nE:ID_CDROM=1\n");
    devices.media["sr0"] = opticalMedium(0x10, 4096);
    const auto drive = byDefault(Wanted::Type);
    ASSERT_TRUE(drive && drive->disc);
    EXPECT_EQ(drive->disc->type, "DVD-ROM");
}

TEST_F(DriveQueryTest, ADiscInADriveThatTellsNoProfileIsNamedByItsSize) {
    machine.addDrive("sr0", "11:0");
    devices.media["sr0"] = opticalMedium(0, 4'700'000'000);
    EXPECT_EQ(byDefault(Wanted::Type)->disc->type, "DVD-ROM");
    devices.media["sr0"].profile.reset();
    devices.media["sr0"].bytes = 700'000'000;
    EXPECT_EQ(byDefault(Wanted::Type)->disc->type, "CD-ROM");
}

TEST_F(DriveQueryTest, AnAudioOrBlankDiscIsNotReadForALabel) {
    machine.addDrive("sr0", "11:0");
    devices.media["sr0"] = opticalMedium(0x09, 2352);
    devices.media["sr0"].audioOnly = true;
    EXPECT_EQ(byDefault()->disc, (DiscFacts{"CD-R", "Audio CD", 2352, true, false}));
    devices.media["sr0"] = opticalMedium(0x09, 0);
    devices.media["sr0"].blank = true;
    EXPECT_EQ(byDefault()->disc, (DiscFacts{"CD-R", "", 0, false, true}));
    EXPECT_THAT(devices.questions, ElementsAre("medium sr0", "medium sr0"));
}

TEST_F(DriveQueryTest, ADeviceThatCannotBeAskedIsAnErrorWithItsNode) {
    machine.addDrive("sr0", "11:0");
    devices.mediumError = "Permission denied";
    EXPECT_EQ(byDefault(), (Failure{Failure::Kind::System, "/dev/sr0: Permission denied"}));
}

TEST_F(DriveQueryTest, ADriveThatCannotBeAskedCanStillBeNamedToEjectIt) {
    machine.addDrive("sr1", "11:1");
    machine.addDrive("sr0", "11:0");
    devices.mediumError = "Permission denied";
    EXPECT_EQ(query.defaultNode(), "sr0");
    query.setPreferredDrive("sr1");
    EXPECT_EQ(query.defaultNode(), "sr1");
}

TEST_F(DriveQueryTest, WithoutADriveThereIsNoneToEject) {
    EXPECT_EQ(query.defaultNode(), noDrive());
}

TEST_F(DriveQueryTest, OfSeveralDrivesTheFirstWithADiscIsTakenInTheOrderOfNumbers) {
    machine.addDrive("sr10", "11:10");
    machine.addDrive("sr2", "11:2");
    machine.addDrive("sr0", "11:0");
    EXPECT_THAT(query.opticalDrives(), ElementsAre("sr0", "sr2", "sr10"));
    devices.media["sr10"] = opticalMedium(0x08, 2048);
    devices.media["sr2"] = opticalMedium(0x10, 2048);
    EXPECT_EQ(byDefault()->node, "sr2");
}

TEST_F(DriveQueryTest, WhenAllTraysAreEmptyTheFirstDriveIsTaken) {
    machine.addDrive("sr1", "11:1");
    machine.addDrive("sr0", "11:0");
    EXPECT_EQ(byDefault()->node, "sr0");
    EXPECT_EQ(byDefault()->disc, std::nullopt);
}

TEST_F(DriveQueryTest, AnEmptyDriveThatAnswersIsBetterThanOneThatDoesNot) {
    machine.addDrive("sr0", "11:0");
    machine.addDrive("sr1", "11:1");
    machine.setRecord("11:1", "E:ID_CDROM=1\nE:ID_CDROM_CD=1\n");
    devices.mediumError = "Permission denied";
    const auto drive = byDefault();
    ASSERT_TRUE(drive);
    EXPECT_EQ(drive->node, "sr1");
}

TEST_F(DriveQueryTest, ThePreferredDriveIsTakenWithOrWithoutItsFolder) {
    machine.addDrive("sr0", "11:0");
    machine.addDrive("sr1", "11:1");
    devices.media["sr0"] = opticalMedium(0x08, 2048);
    for (const char* name : {"sr1", "/dev/sr1"}) {
        query.setPreferredDrive(name);
        EXPECT_EQ(byDefault()->node, "sr1") << name;
    }
    query.setPreferredDrive("sr7");
    EXPECT_EQ(byDefault(), noDrive());
    EXPECT_FALSE(query.defaultNode());
}

TEST_F(DriveQueryTest, ADriveWithoutANodeAndOtherDisksAreNoDrives) {
    machine.addDrive("sr0", "11:0");
    machine.removeNode("sr0");
    machine.addDrive("sda", "8:0");
    machine.addDrive("sram", "9:0");
    machine.addDrive("sr", "9:1");
    EXPECT_THAT(query.opticalDrives(), IsEmpty());
    EXPECT_EQ(byDefault(), noDrive());
}

TEST_F(DriveQueryTest, ADriveThatVanishesWhileItIsDescribedIsAnError) {
    machine.addDrive("sr0", "11:0");
    unlink(machine.path("sys/sr0/dev").c_str());
    unlink(machine.path("sys/sr0/device/vendor").c_str());
    devices.mediumError = "No such device or address";
    EXPECT_EQ(named("sr0"),
              (Failure{Failure::Kind::System, "/dev/sr0: No such device or address"}));
}

TEST_F(DriveQueryTest, ALinkToADriveNamesTheDrive) {
    machine.addDrive("sr0", "11:0");
    machine.setRecord("11:0", dualLayerRecord);
    ASSERT_EQ(symlink("sr0", machine.path("dev/cdrom").c_str()), 0);
    EXPECT_EQ(named("/dev/cdrom")->node, "sr0");
}

TEST_F(DriveQueryTest, ADeviceThatDoesNotExistIsNotFound) {
    for (const char* name : {"/dev/sr9", "sr9", "/dev/", "", "..", "/dev/../sda", "/etc/passwd"}) {
        EXPECT_EQ(named(name),
                  (Failure{Failure::Kind::NoDrive, std::string("Could not find disk: ") + name}));
    }
}

TEST_F(DriveQueryTest, ThePracticeDriveIsOnlyThereWhenItWasChosen) {
    EXPECT_EQ(named("/dev/practice0"),
              (Failure{Failure::Kind::NoDrive, "Could not find disk: /dev/practice0"}));
}

TEST_F(DriveQueryTest, ThePracticeDriveStandsInForAllRealOnes) {
    machine.addDrive("sr0", "11:0");
    const ScratchFolder folder;
    query.setPracticeFolder(folder.path());
    EXPECT_EQ(byDefault()->node, "practice0");
    EXPECT_THAT(devices.questions, IsEmpty());
}

}  // namespace
