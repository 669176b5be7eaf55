#include "Remarks.h"

#include <gmock/gmock.h>

namespace {

TEST(RemarksTest, EachLineIsOneWithoutTheToolsName) {
    EXPECT_EQ(remarksIn("hdiutil: too short\n\n  odd \n"), QStringList({"too short", "odd"}));
    EXPECT_EQ(remarksIn(""), QStringList());
}

TEST(RemarksTest, NoBlanksAreLeftBehindTheToolsName) {
    EXPECT_EQ(remarksIn(" hdiutil: \t too short\r\n"), QStringList({"too short"}));
}

TEST(RemarksTest, TheToolsNameAloneIsNoRemark) {
    EXPECT_EQ(remarksIn("hdiutil:\nhdiutil: \n"), QStringList());
}

}  // namespace
