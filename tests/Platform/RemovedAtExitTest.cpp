#include "RemovedAtExit.h"

#include <gtest/gtest.h>

#include <QFile>
#include <cstdlib>
#include <optional>

#include "TestFolder.h"

namespace {

TEST(RemovedAtExitTest, AHeldFileGoesWithTheProgram) {
    const TestFolder folder;
    const QString path = folder.write("image", "half");
    EXPECT_EXIT(
        {
            const RemovedAtExit held(path);
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
    EXPECT_FALSE(QFile::exists(path));
}

TEST(RemovedAtExitTest, AFileThatIsNoLongerHeldStays) {
    const TestFolder folder;
    const QString path = folder.write("image", "whole");
    EXPECT_EXIT(
        {
            std::optional<RemovedAtExit> held(path);
            held.reset();
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
    EXPECT_EQ(TestFolder::read(path), QByteArray("whole"));
}

TEST(RemovedAtExitTest, AFileThatTwoHoldGoesUntilBothHaveLetGo) {
    const TestFolder folder;
    const QString path = folder.write("image", "half");
    std::optional<RemovedAtExit> first(path);
    const RemovedAtExit second(path);
    first.reset();
    RemovedAtExit::removeAll();
    EXPECT_FALSE(QFile::exists(path));
}

}  // namespace
