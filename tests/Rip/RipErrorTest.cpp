#include "RipError.h"

#include <gtest/gtest.h>

namespace {

TEST(RipErrorTest, ALaunchFailureSaysThatTheRipCouldNotStart) {
    const auto error = RipError::launchFailed(QStringLiteral("No such file or directory"));
    EXPECT_EQ(error.errorDescription(),
              QStringLiteral("Could not start rip: No such file or directory"));
    EXPECT_EQ(error.kindName(), QStringLiteral("launchFailed"));
}

TEST(RipErrorTest, AnImagingFailureGivesTheToolsWords) {
    const auto error = RipError::imagingFailed(QStringLiteral("create failed - no medium"));
    EXPECT_EQ(error.errorDescription(),
              QStringLiteral("hdiutil exited with an error: create failed - no medium"));
    EXPECT_EQ(error.kindName(), QStringLiteral("imagingFailed"));
}

TEST(RipErrorTest, TheTextIsNeitherTrimmedNorShortened) {
    const QString text = u" \n" + QString(5000, u'x') + u"\t\n ";
    EXPECT_EQ(RipError::imagingFailed(text).errorDescription(),
              u"hdiutil exited with an error: " + text);
    EXPECT_EQ(RipError::launchFailed(text).errorDescription(), u"Could not start rip: " + text);
}

TEST(RipErrorTest, AMissingPermissionNamesTheWayOut) {
    const auto error = RipError::permissionDenied();
    EXPECT_EQ(error.errorDescription(),
              QStringLiteral("Permission denied reading the disc. Try again, or grant Full Disk "
                             "Access to this app in System Settings."));
    EXPECT_EQ(error.kindName(), QStringLiteral("permissionDenied"));
    EXPECT_EQ(error.text(), QString());
}

TEST(RipErrorTest, ErrorsAreEqualWhenKindAndTextAre) {
    const QString text = QStringLiteral("a");
    EXPECT_EQ(RipError::imagingFailed(text), RipError::imagingFailed(text));
    EXPECT_NE(RipError::imagingFailed(text), RipError::imagingFailed(QStringLiteral("b")));
    EXPECT_NE(RipError::imagingFailed(text), RipError::launchFailed(text));
    EXPECT_EQ(RipError::permissionDenied(), RipError::permissionDenied());
    EXPECT_NE(RipError::permissionDenied(), RipError::imagingFailed(QString()));
}

}  // namespace
