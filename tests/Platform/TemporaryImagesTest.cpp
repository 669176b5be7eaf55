#include "TemporaryImages.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QFile>
#include <QRegularExpression>

#include "TestFolder.h"

namespace {

using TemporaryImages::Purpose;

class TemporaryImagesTest : public testing::Test {
protected:
    // An image that was last written to two hours ago.
    QString writeOld(Purpose purpose) const {
        const QString path = TemporaryImages::freshBase(purpose) + QStringLiteral(".cdr");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("half") == 4);
        file.close();
        const timespec then = {time(nullptr) - 7200, 0};
        const timespec times[2] = {then, then};
        EXPECT_EQ(utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
        return path;
    }

    const TestFolder folder;
};

TEST_F(TemporaryImagesTest, EachKindHasItsPrefixAndAFreshIdentifierInTheTemporaryFolder) {
    const QString identifier = QStringLiteral("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
    const auto isNamed = [&](Purpose purpose, const QString& prefix) {
        const QRegularExpression form(QRegularExpression::anchoredPattern(
            QRegularExpression::escape(folder.temporary() + prefix) + identifier));
        return form.match(TemporaryImages::freshBase(purpose)).hasMatch();
    };
    EXPECT_TRUE(isNamed(Purpose::Rip, QStringLiteral("spindrift-")));
    EXPECT_TRUE(isNamed(Purpose::Verification, QStringLiteral("spindrift-verify-")));
    EXPECT_TRUE(isNamed(Purpose::SpeedTest, QStringLiteral("spindrift-speedtest-")));
    EXPECT_NE(TemporaryImages::freshBase(Purpose::Rip), TemporaryImages::freshBase(Purpose::Rip));
}

TEST_F(TemporaryImagesTest, AnImageCanBeMadeInAnotherFolder) {
    EXPECT_TRUE(TemporaryImages::freshBase(Purpose::Rip, QStringLiteral("/some/where"))
                    .startsWith(QStringLiteral("/some/where/spindrift-")));
}

TEST_F(TemporaryImagesTest, OfTheOldOnesOnlyTheImageOfARipStays) {
    const QString rip = writeOld(Purpose::Rip);
    writeOld(Purpose::Verification);
    writeOld(Purpose::SpeedTest);
    TemporaryImages::removeAbandoned();
    EXPECT_EQ(TestFolder::list(folder.temporary()),
              QStringList(rip.mid(folder.temporary().size())));
}

TEST_F(TemporaryImagesTest, WhatFailedRipsLeftIsTold) {
    const QString rip = writeOld(Purpose::Rip);
    writeOld(Purpose::Verification);
    EXPECT_EQ(TemporaryImages::leftByRips(), QStringList(rip));
}

}  // namespace
