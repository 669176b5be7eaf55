#include "MainThreadLink.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <thread>

#include "Waiting.h"

namespace {

TEST(MainThreadLinkTest, WorkRunsLaterAndInItsOrder) {
    QObject model;
    const auto link = MainThreadLink::to(&model);
    QStringList ran;
    std::thread([&] {
        link->post([&] { ran.append(QStringLiteral("one")); });
        link->post([&] { ran.append(QStringLiteral("two")); });
    }).join();
    EXPECT_EQ(ran, QStringList());
    EXPECT_TRUE(waitUntil([&] { return ran.size() == 2; }));
    EXPECT_EQ(ran, QStringList({"one", "two"}));
}

TEST(MainThreadLinkTest, WhatWasOnItsWayWhenTheLinkWasCutIsDropped) {
    QObject model;
    const auto link = MainThreadLink::to(&model);
    const auto other = MainThreadLink::to(&model);
    bool ran = false;
    bool otherRan = false;
    link->post([&] { ran = true; });
    other->post([&] { otherRan = true; });
    link->cut();
    EXPECT_TRUE(link->isCut());
    EXPECT_TRUE(waitUntil([&] { return otherRan; }));
    EXPECT_FALSE(ran);
}

TEST(MainThreadLinkTest, AfterACutWorkIsDestroyedUnrun) {
    QObject model;
    const auto link = MainThreadLink::to(&model);
    link->cut();
    const auto kept = std::make_shared<int>();
    link->post([kept] { ++*kept; });
    EXPECT_EQ(kept.use_count(), 1);
    EXPECT_EQ(*kept, 0);
}

TEST(MainThreadLinkTest, WorkOnItsWayIsDestroyedWithItsModel) {
    auto model = std::make_unique<QObject>();
    const auto link = MainThreadLink::to(model.get());
    const auto kept = std::make_shared<int>();
    link->post([kept] { ++*kept; });
    EXPECT_EQ(kept.use_count(), 2);
    link->cut();
    model.reset();
    EXPECT_EQ(kept.use_count(), 1);
    EXPECT_EQ(*kept, 0);
}

}  // namespace
