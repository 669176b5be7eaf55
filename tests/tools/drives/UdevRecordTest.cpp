#include "UdevRecord.h"

#include <gmock/gmock.h>

#include "FakeMachine.h"

namespace {

// The record of a drive with a disc that has this type flag.
UdevRecord withFlag(const std::string& flag) {
    return UdevRecord::parse(
        "E:ID_CDROM=1\nE:ID_CDROM_DVD=1\nE:ID_CDROM_MEDIA=1\nE:ID_CDROM_MEDIA_" + flag +
        "=1\nE:ID_CDROM_MEDIA_STATE=complete\n");
}

TEST(UdevRecordTest, ARecordedDiscHasItsTypeItsStateAndItsLabel) {
    const UdevRecord record = UdevRecord::parse(dualLayerRecord);
    EXPECT_TRUE(record.knowsOpticalDrive());
    EXPECT_TRUE(record.hasDisc());
    EXPECT_EQ(record.discType(), "DVD+R DL");
    EXPECT_FALSE(record.isBlank());
    EXPECT_FALSE(record.isAudioOnly());
    EXPECT_TRUE(record.hasFileSystem());
    EXPECT_EQ(record.label(), "My Disc");
}

TEST(UdevRecordTest, EachTypeFlagAloneGivesItsType) {
    EXPECT_EQ(withFlag("CD").discType(), "CD-ROM");
    EXPECT_EQ(withFlag("CD_R").discType(), "CD-R");
    EXPECT_EQ(withFlag("CD_RW").discType(), "CD-RW");
    EXPECT_EQ(withFlag("DVD").discType(), "DVD-ROM");
    EXPECT_EQ(withFlag("DVD_R").discType(), "DVD-R");
    EXPECT_EQ(withFlag("DVD_RAM").discType(), "DVD-RAM");
    EXPECT_EQ(withFlag("DVD_RW_SEQ").discType(), "DVD-RW");
    EXPECT_EQ(withFlag("DVD_R_DL_JR").discType(), "DVD-R DL");
    EXPECT_EQ(withFlag("DVD_PLUS_R").discType(), "DVD+R");
    EXPECT_EQ(withFlag("DVD_PLUS_RW").discType(), "DVD+RW");
    EXPECT_EQ(withFlag("DVD_PLUS_RW_DL").discType(), "DVD+RW DL");
    EXPECT_EQ(withFlag("BD").discType(), "BD-ROM");
    EXPECT_EQ(withFlag("BD_R_RRM").discType(), "BD-R");
    EXPECT_EQ(withFlag("BD_RE").discType(), "BD-RE");
    EXPECT_EQ(withFlag("HDDVD_RW").discType(), "HD DVD-RW");
}

TEST(UdevRecordTest, TheExactFlagWinsOverAGeneralOneBesideIt) {
    EXPECT_EQ(withFlag("DVD=1\nE:ID_CDROM_MEDIA_DVD_R").discType(), "DVD-R");
    EXPECT_EQ(withFlag("CD=1\nE:ID_CDROM_MEDIA_CD_RW").discType(), "CD-RW");
}

TEST(UdevRecordTest, ADiscOfNoKnownTypeIsUnknown) {
    EXPECT_EQ(withFlag("SOMETHING_NEW").discType(), "Unknown");
    EXPECT_EQ(UdevRecord::parse("E:ID_CDROM_MEDIA=1\n").discType(), "Unknown");
}

TEST(UdevRecordTest, WhatTheDriveCanDoIsNotTakenForTheDiscInIt) {
    const UdevRecord record =
        UdevRecord::parse("E:ID_CDROM=1\nE:ID_CDROM_BD=1\nE:ID_CDROM_DVD_PLUS_R=1\n");
    EXPECT_TRUE(record.knowsOpticalDrive());
    EXPECT_FALSE(record.hasDisc());
    EXPECT_EQ(record.discType(), "Unknown");
}

TEST(UdevRecordTest, ARecordThatNoHelperFilledDoesNotKnowTheDrive) {
    EXPECT_FALSE(UdevRecord::parse("").knowsOpticalDrive());
    EXPECT_FALSE(UdevRecord::parse("I:12\nE:ID_CDROM=1\nE:ID_SERIAL=x\nV:1\n").knowsOpticalDrive());
    EXPECT_FALSE(UdevRecord::parse("E:ID_FS_TYPE=ext4\n").knowsOpticalDrive());
}

TEST(UdevRecordTest, BlankAndAppendableAreToldApart) {
    EXPECT_TRUE(UdevRecord::parse("E:ID_CDROM_MEDIA_STATE=blank\n").isBlank());
    EXPECT_FALSE(UdevRecord::parse("E:ID_CDROM_MEDIA_STATE=appendable\n").isBlank());
}

TEST(UdevRecordTest, OnlyADiscWithoutDataTracksIsAudio) {
    const std::string audio = "E:ID_CDROM_MEDIA_TRACK_COUNT_AUDIO=11\n";
    EXPECT_TRUE(UdevRecord::parse(audio).isAudioOnly());
    EXPECT_FALSE(UdevRecord::parse(audio + "E:ID_CDROM_MEDIA_TRACK_COUNT_DATA=1\n").isAudioOnly());
    EXPECT_FALSE(UdevRecord::parse("E:ID_CDROM_MEDIA_TRACK_COUNT_DATA=1\n").isAudioOnly());
    EXPECT_FALSE(UdevRecord::parse("").isAudioOnly());
    EXPECT_FALSE(UdevRecord::parse("E:ID_CDROM_MEDIA_TRACK_COUNT_AUDIO=many\n").isAudioOnly());
}

TEST(UdevRecordTest, DataBehindSoundIsAsLargeAsTheLastSession) {
    const std::string mixed =
        "E:ID_CDROM_MEDIA_TRACK_COUNT_AUDIO=11\nE:ID_CDROM_MEDIA_TRACK_COUNT_DATA=1\n";
    const std::string offset = "E:ID_CDROM_MEDIA_SESSION_LAST_OFFSET=";
    EXPECT_TRUE(UdevRecord::parse(mixed).isMixed());
    EXPECT_EQ(UdevRecord::parse(mixed + offset + "6000\n").mixedDataBytes(10000), 4000U);
    // Where the data ends before the sound begins, the record does not tell where.
    EXPECT_EQ(UdevRecord::parse(mixed).mixedDataBytes(10000), std::nullopt);
    EXPECT_EQ(UdevRecord::parse(mixed + offset + "0\n").mixedDataBytes(10000), std::nullopt);
    EXPECT_EQ(UdevRecord::parse(mixed + offset + "10000\n").mixedDataBytes(10000), std::nullopt);
    EXPECT_EQ(UdevRecord::parse("E:ID_CDROM_MEDIA_TRACK_COUNT_AUDIO=11\n"
                                "E:ID_CDROM_MEDIA_TRACK_COUNT_DATA=2\n" +
                                offset + "6000\n")
                  .mixedDataBytes(10000),
              std::nullopt);
    EXPECT_FALSE(UdevRecord::parse("E:ID_CDROM_MEDIA_TRACK_COUNT_DATA=1\n").isMixed());
    EXPECT_FALSE(UdevRecord::parse("E:ID_CDROM_MEDIA_TRACK_COUNT_AUDIO=1\n").isMixed());
}

TEST(UdevRecordTest, TheEncodedLabelIsDecodedToTheBytesOnTheDisc) {
    EXPECT_EQ(UdevRecord::decoded(R"(A\x20\x2fB)"), "A /B");
    EXPECT_EQ(UdevRecord::decoded(R"(\x5cx20)"), R"(\x20)");
    EXPECT_EQ(UdevRecord::decoded("Gr\xC3\xBC\xC3\x9F"
                                  "e"),
              "Gr\xC3\xBC\xC3\x9F"
              "e");
    EXPECT_EQ(UdevRecord::decoded(R"(\x4A\x4a)"), "JJ");
}

TEST(UdevRecordTest, WhatOnlyLooksEncodedStaysAsItIs) {
    EXPECT_EQ(UdevRecord::decoded(R"(\xg0)"), R"(\xg0)");
    EXPECT_EQ(UdevRecord::decoded(R"(end\x2)"), R"(end\x2)");
    EXPECT_EQ(UdevRecord::decoded("back\\slash\\"), "back\\slash\\");
    EXPECT_EQ(UdevRecord::decoded(""), "");
}

TEST(UdevRecordTest, ALabelOfOtherBytesIsStillUtf8) {
    EXPECT_EQ(UdevRecord::parse("E:ID_FS_LABEL_ENC=M\\xfcsli\n").label(), "M\xEF\xBF\xBDsli");
}

TEST(UdevRecordTest, ALabelIsTrimmedAndMayBeMissing) {
    EXPECT_EQ(UdevRecord::parse("E:ID_FS_LABEL_ENC=\\x20A\\x20B\\x20\\x20\n").label(), "A B");
    EXPECT_EQ(UdevRecord::parse("E:ID_FS_LABEL=PLAIN\n").label(), "PLAIN");
    EXPECT_EQ(UdevRecord::parse("E:ID_FS_TYPE=udf\n").label(), "");
}

TEST(UdevRecordTest, OddLinesAreSkipped) {
    const UdevRecord record =
        UdevRecord::parse("\n\nE:\nE:NOVALUE\nE:=x\nX:ID_CDROM=0\nE:A=b=c\nE:LAST=end");
    EXPECT_EQ(record.value("A"), "b=c");
    EXPECT_EQ(record.value("LAST"), "end");
    EXPECT_EQ(record.value("NOVALUE"), std::nullopt);
    EXPECT_EQ(record.value("ID_CDROM"), std::nullopt);
}

TEST(UdevRecordTest, ARecordCutAtAnyByteIsReadWithoutHarm) {
    const std::string whole = dualLayerRecord;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const UdevRecord record = UdevRecord::parse(std::string_view(whole).substr(0, size));
        const std::string_view type = record.discType();
        EXPECT_TRUE(type == "Unknown" || type == "DVD+R DL" || type == "DVD+R" || type == "DVD-ROM")
            << size << " " << type;
    }
}

}  // namespace
