#include "VerifyStatus.h"

#include <gtest/gtest.h>

namespace {

const QString notRead = QStringLiteral("Could not re-read the disc to verify.");
const QString noDigest = QStringLiteral("Could not compute checksum.");

TEST(VerifyStatusTest, FailuresAreEqualOnlyWhenTheirTextsAre) {
    EXPECT_EQ(VerifyStatus::failed(noDigest), VerifyStatus::failed(noDigest));
    EXPECT_NE(VerifyStatus::failed(noDigest), VerifyStatus::failed(notRead));
    EXPECT_EQ(VerifyStatus::failed(noDigest).text(), noDigest);
}

TEST(VerifyStatusTest, DifferentVerdictsAreDifferent) {
    EXPECT_EQ(VerifyStatus::matched(), VerifyStatus::matched());
    EXPECT_EQ(VerifyStatus::mismatched(), VerifyStatus::mismatched());
    EXPECT_NE(VerifyStatus::matched(), VerifyStatus::mismatched());
    EXPECT_NE(VerifyStatus::matched(), VerifyStatus::failed(QString()));
    EXPECT_NE(VerifyStatus::mismatched(), VerifyStatus::failed(QString()));
}

}  // namespace
