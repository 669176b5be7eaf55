#include "VerifyStatus.h"

#include <gtest/gtest.h>

namespace {

const QString notReadAgain = QStringLiteral("Could not re-read the disc to verify.");
const QString noChecksum = QStringLiteral("Could not compute checksum.");

TEST(VerifyStatusTest, FailuresAreEqualOnlyWhenTheirTextsAre) {
    EXPECT_EQ(VerifyStatus::failed(noChecksum), VerifyStatus::failed(noChecksum));
    EXPECT_NE(VerifyStatus::failed(noChecksum), VerifyStatus::failed(notReadAgain));
    EXPECT_EQ(VerifyStatus::failed(noChecksum).text(), noChecksum);
}

TEST(VerifyStatusTest, DifferentVerdictsAreDifferent) {
    EXPECT_EQ(VerifyStatus::matched(), VerifyStatus::matched());
    EXPECT_EQ(VerifyStatus::mismatched(), VerifyStatus::mismatched());
    EXPECT_NE(VerifyStatus::matched(), VerifyStatus::mismatched());
    EXPECT_NE(VerifyStatus::matched(), VerifyStatus::failed(QString()));
    EXPECT_NE(VerifyStatus::mismatched(), VerifyStatus::failed(QString()));
}

}  // namespace
