#include "ErrorText.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(ErrorTextTest, AnErrorNumberHasItsStandardText) {
    EXPECT_EQ(errorText(ENOENT), u"No such file or directory");
    EXPECT_EQ(errorText(EACCES), u"Permission denied");
}

TEST(ErrorTextTest, ANumberWithoutATextIsNamed) {
    EXPECT_EQ(errorText(4711), u"Unknown error 4711");
    EXPECT_EQ(errorText(-1), u"Unknown error -1");
}

}  // namespace
