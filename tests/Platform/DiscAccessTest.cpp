#include "DiscAccess.h"

#include <gmock/gmock.h>

#include <QFile>

#include "TestFolder.h"
#include "Waiting.h"

namespace {

class DiscAccessTest : public testing::Test {
protected:
    // A pkexec that writes down its arguments and ends with this status.
    DiscAccess::Programs programs(int status) {
        const QString path = m_folder.write(QStringLiteral("pkexec"),
                                            "#!/bin/sh\necho \"$@\" > '" +
                                                m_folder.path(QStringLiteral("asked")).toUtf8() +
                                                "'\nexit " + QByteArray::number(status) + "\n");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
        return {path, QStringLiteral("/the/granter")};
    }
    DiscAccess::Outcome outcome(const std::optional<DiscAccess::Programs>& programs) {
        std::optional<DiscAccess::Outcome> result;
        DiscAccess::request(programs, &m_context, [&](DiscAccess::Outcome o) { result = o; });
        EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
        return *result;
    }

    TestFolder m_folder;
    QObject m_context;
};

TEST_F(DiscAccessTest, TheGranterIsRunThroughPkexecWithoutArguments) {
    EXPECT_EQ(outcome(programs(0)), DiscAccess::Outcome::Granted);
    EXPECT_EQ(*TestFolder::read(m_folder.path(QStringLiteral("asked"))), "/the/granter\n");
}

TEST_F(DiscAccessTest, AQuestionThatTheUserClosedIsDeclined) {
    EXPECT_EQ(outcome(programs(126)), DiscAccess::Outcome::Declined);
}

TEST_F(DiscAccessTest, AQuestionThatNobodyCouldAskMakesItUnavailable) {
    EXPECT_EQ(outcome(programs(127)), DiscAccess::Outcome::Unavailable);
}

TEST_F(DiscAccessTest, AGranterThatFailsIsAFailure) {
    EXPECT_EQ(outcome(programs(1)), DiscAccess::Outcome::Failed);
}

TEST_F(DiscAccessTest, WithoutTheProgramsItIsUnavailableAtOnce) {
    std::optional<DiscAccess::Outcome> result;
    DiscAccess::request(std::nullopt, &m_context, [&](DiscAccess::Outcome o) { result = o; });
    EXPECT_EQ(result, DiscAccess::Outcome::Unavailable);
}

TEST_F(DiscAccessTest, AProgramThatCannotBeStartedMakesItUnavailable) {
    EXPECT_EQ(outcome(DiscAccess::Programs{m_folder.path(QStringLiteral("nothing")),
                                           QStringLiteral("/the/granter")}),
              DiscAccess::Outcome::Unavailable);
}

TEST_F(DiscAccessTest, AnAnswerForAContextThatHasGoneIsDropped) {
    bool called = false;
    auto context = std::make_unique<QObject>();
    const auto granting = programs(0);
    DiscAccess::request(granting, context.get(), [&](DiscAccess::Outcome) { called = true; });
    context.reset();
    EXPECT_EQ(outcome(granting), DiscAccess::Outcome::Granted);
    EXPECT_FALSE(called);
}

}  // namespace
