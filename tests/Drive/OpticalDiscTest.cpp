#include "OpticalDisc.h"

#include <gmock/gmock.h>

namespace {

TEST(DiscKindTest, RawValuesAreTheTextsThatUsersSee) {
    EXPECT_EQ(rawValue(DiscKind::cd), QStringLiteral("CD"));
    EXPECT_EQ(rawValue(DiscKind::dvd), QStringLiteral("DVD"));
    EXPECT_EQ(rawValue(DiscKind::bd), QStringLiteral("BD"));
    EXPECT_EQ(rawValue(DiscKind::unknown), QStringLiteral("Disc"));
}

TEST(DiscKindTest, TheCasesStandInTheirOrder) {
    EXPECT_EQ(int(DiscKind::cd), 0);
    EXPECT_EQ(int(DiscKind::dvd), 1);
    EXPECT_EQ(int(DiscKind::bd), 2);
    EXPECT_EQ(int(DiscKind::unknown), 3);
}

TEST(DiscKindTest, EveryRawValueGivesItsCaseBack) {
    for (const DiscKind kind : {DiscKind::cd, DiscKind::dvd, DiscKind::bd, DiscKind::unknown}) {
        EXPECT_EQ(discKindFromRawValue(rawValue(kind)), kind);
    }
}

TEST(DiscKindTest, AnyOtherTextIsNoRawValue) {
    for (const char* text : {"cd", "Dvd", "disc", "DISC", "", " CD", "CD ", "CD-ROM", "unknown"}) {
        EXPECT_EQ(discKindFromRawValue(QString::fromLatin1(text)), std::nullopt) << text;
    }
}

TEST(DiscKindTest, EveryTypeOfTheDriveToolHasItsKind) {
    for (const char* type : {"CD-ROM", "CD-R", "CD-RW"}) {
        EXPECT_EQ(discKindFromRawType(QString::fromLatin1(type)), DiscKind::cd) << type;
    }
    for (const char* type : {"DVD-ROM", "DVD-R", "DVD-R DL", "DVD-RW", "DVD-RAM", "DVD+R",
                             "DVD+R DL", "DVD+RW", "DVD+RW DL", "HD DVD-ROM"}) {
        EXPECT_EQ(discKindFromRawType(QString::fromLatin1(type)), DiscKind::dvd) << type;
    }
    for (const char* type : {"BD-ROM", "BD-R", "BD-RE"}) {
        EXPECT_EQ(discKindFromRawType(QString::fromLatin1(type)), DiscKind::bd) << type;
    }
}

TEST(DiscKindTest, LowerCaseTypesHaveTheSameKind) {
    EXPECT_EQ(discKindFromRawType(QStringLiteral("dvd-rom")), DiscKind::dvd);
    EXPECT_EQ(discKindFromRawType(QStringLiteral("cd-r")), DiscKind::cd);
    EXPECT_EQ(discKindFromRawType(QStringLiteral("bD-re")), DiscKind::bd);
}

TEST(DiscKindTest, OtherTextsAreUnknown) {
    for (const char* type : {"", "HD", "C D", "DV D", "B-D", "none"}) {
        EXPECT_EQ(discKindFromRawType(QString::fromLatin1(type)), DiscKind::unknown) << type;
    }
}

TEST(DiscKindTest, MixedTextsAreDecidedInTheOrderBdDvdCd) {
    EXPECT_EQ(discKindFromRawType(QStringLiteral("DVD/BD")), DiscKind::bd);
    EXPECT_EQ(discKindFromRawType(QStringLiteral("CD DVD BD")), DiscKind::bd);
    EXPECT_EQ(discKindFromRawType(QStringLiteral("CD-DVD")), DiscKind::dvd);
}

class OpticalDiscTest : public testing::Test {
protected:
    OpticalDisc disc{QStringLiteral("disk4"),
                     QStringLiteral("CD-ROM"),
                     DiscKind::cd,
                     QStringLiteral("NAME"),
                     681574400,
                     QStringLiteral("disk4s1")};
};

TEST_F(OpticalDiscTest, ItsIdentityIsItsDevice) {
    EXPECT_EQ(disc.id(), QStringLiteral("disk4"));
}

TEST_F(OpticalDiscTest, AVolumesNameIsShown) {
    EXPECT_EQ(disc.displayName(), QStringLiteral("NAME"));
    disc.volumeName = QStringLiteral(" ");
    EXPECT_EQ(disc.displayName(), QStringLiteral(" "));
}

TEST_F(OpticalDiscTest, WithoutAVolumesNameKindAndTypeAreShown) {
    disc.volumeName.reset();
    EXPECT_EQ(disc.displayName(), QStringLiteral("CD (CD-ROM)"));
    disc.kind = DiscKind::unknown;
    disc.rawType = QStringLiteral("HD");
    EXPECT_EQ(disc.displayName(), QStringLiteral("Disc (HD)"));
}

TEST_F(OpticalDiscTest, AnEmptyVolumeNameFallsBackToKindAndType) {
    disc.volumeName = QStringLiteral("");
    EXPECT_EQ(disc.displayName(), QStringLiteral("CD (CD-ROM)"));
}

TEST_F(OpticalDiscTest, EveryFieldCountsForEquality) {
    const OpticalDisc same = disc;
    EXPECT_EQ(disc, same);
    const auto differs = [&](auto change) {
        OpticalDisc other = disc;
        change(other);
        return other != disc;
    };
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.bsdName = QStringLiteral("Disk4"); }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.rawType = QStringLiteral("CD-Rom"); }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.kind = DiscKind::dvd; }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.volumeName = QStringLiteral("Name"); }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.volumeName.reset(); }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.volumeName = QString(); }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.totalBytes = 681574401; }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.totalBytes.reset(); }));
    EXPECT_TRUE(differs([](OpticalDisc& d) { d.imageSourceBSDName = QStringLiteral("disk4"); }));
}

TEST_F(OpticalDiscTest, AnAbsentNameIsNotAnEmptyOne) {
    disc.volumeName.reset();
    OpticalDisc other = disc;
    EXPECT_EQ(disc, other);
    other.volumeName = QString();
    EXPECT_NE(disc, other);
}

}  // namespace
