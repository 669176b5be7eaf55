// A value or a failure, never both and never neither.
#include "Result.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <memory>

namespace {

const Failure denied{Failure::Kind::NoAccess, "Permission denied"};

TEST(ResultTest, AValueIsASuccessEvenWhenItLooksEmpty) {
    const Result<std::string> text = "";
    ASSERT_TRUE(text);
    EXPECT_EQ(*text, "");
    EXPECT_THROW(text.failure(), std::bad_variant_access);
    const Result<std::unique_ptr<int>> nothing = nullptr;
    EXPECT_TRUE(nothing);
}

TEST(ResultTest, AFailureHasNoValue) {
    const Result<std::string> text = denied;
    ASSERT_FALSE(text);
    EXPECT_EQ(text.failure(), denied);
    EXPECT_THROW(static_cast<void>(text->size()), std::bad_variant_access);
}

TEST(ResultTest, WhatGivesNoValueSucceedsOrFails) {
    EXPECT_TRUE(Result<void>());
    const Result<void> failed = denied;
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.failure(), denied);
}

TEST(ResultTest, AnErrorNumberHasItsKindAndItsText) {
    EXPECT_EQ(Failure::ofErrno(EACCES), denied);
    EXPECT_EQ(Failure::ofErrno(EPERM).kind, Failure::Kind::NoAccess);
    EXPECT_EQ(Failure::ofErrno(EBUSY).kind, Failure::Kind::Busy);
    EXPECT_EQ(Failure::ofErrno(EIO, "/dev/sr0"),
              (Failure{Failure::Kind::System, "/dev/sr0: Input/output error"}));
}

}  // namespace
