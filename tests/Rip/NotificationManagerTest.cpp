#include "NotificationManager.h"

#include <gtest/gtest.h>

#include <QProcess>

#include "NotificationBus.h"
#include "NotificationServer.h"
#include "SessionBus.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

constexpr int longEnough = 60000;  // only ends a test that would hang

class NotificationManagerTest : public testing::Test {
protected:
    ~NotificationManagerTest() override { NotificationManager::flush(longEnough); }

    static void notify(const QString& body) {
        NotificationManager::notify(QStringLiteral("Title"), body);
    }
    // A program that posts one notification; true when it ended well and said nothing.
    static bool runProgram(int milliseconds) {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QStringLiteral(NOTIFY_AND_EXIT), {QString::number(milliseconds)});
        const bool ended = program.waitForFinished(longEnough);
        program.kill();
        program.waitForFinished();
        return ended && program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0 &&
               program.readAll().isEmpty();
    }

    TestFolder folder;
};

TEST_F(NotificationManagerTest, ItCarriesEverythingThatADaemonWantsToKnow) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {QStringLiteral("body")});
    NotificationManager::notify(QStringLiteral("Rip Verified"),
                                QStringLiteral("Saved and verified: disc.iso"));
    NotificationManager::flush(longEnough);
    ASSERT_EQ(server.received().size(), 1);
    const auto received = server.received().first();
    EXPECT_EQ(received.application, QStringLiteral("Spindrift"));
    EXPECT_EQ(received.icon, QStringLiteral("spindrift"));
    EXPECT_EQ(received.title, QStringLiteral("Rip Verified"));
    EXPECT_EQ(received.body, QStringLiteral("Saved and verified: disc.iso"));
    EXPECT_EQ(received.replaces, 0U);
    EXPECT_EQ(received.actions, 0);
    EXPECT_EQ(received.hints, QStringList({"desktop-entry=spindrift", "suppress-sound=true"}));
    EXPECT_EQ(received.timeout, -1);
}

TEST_F(NotificationManagerTest, TwoInARowAreTwoInTheirOrder) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {});
    notify(QStringLiteral("one"));
    notify(QStringLiteral("two"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: one", "Title: two"}));
    EXPECT_EQ(server.received().last().replaces, 0U);
}

TEST_F(NotificationManagerTest, ABodyIsEscapedForADaemonThatReadsMarkup) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(),
                                    {QStringLiteral("actions"), QStringLiteral("body-markup")});
    NotificationManager::notify(QStringLiteral("A & <B>"),
                                QStringLiteral("R&B <b>\"best\"</b> of '99 &amp;.iso"));
    NotificationManager::flush(longEnough);
    ASSERT_EQ(server.received().size(), 1);
    EXPECT_EQ(server.received().first().body,
              QStringLiteral("R&amp;B &lt;b&gt;\"best\"&lt;/b&gt; of '99 &amp;amp;.iso"));
    EXPECT_EQ(server.received().first().title, QStringLiteral("A & <B>"));
}

TEST_F(NotificationManagerTest, ABodyIsSentAsItIsToADaemonThatReadsNone) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(),
                                    {QStringLiteral("body"), QStringLiteral("body-markup-not")});
    notify(QStringLiteral("R&B <b>\"best\"</b>.iso"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: R&B <b>\"best\"</b>.iso"}));
}

TEST_F(NotificationManagerTest, AnotherDaemonIsAskedAgain) {
    const SessionBus bus(folder);
    {
        const NotificationServer server(bus.address(), {});
        notify(QStringLiteral("&"));
        NotificationManager::flush(longEnough);
        EXPECT_EQ(server.texts(), QStringList({"Title: &"}));
    }
    const NotificationServer server(bus.address(), {QStringLiteral("body-markup")});
    notify(QStringLiteral("&"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: &amp;"}));
}

TEST_F(NotificationManagerTest, OddTextsArrive) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {});
    const QString plain = QStringLiteral("\u00e4\u65e5\U0001F4BF two\nlines\t%s");
    notify(plain);
    notify(u'a' + QString(QChar(u'\0')) + u'b');
    notify(u'a' + QString(QChar(0xD800)) + u'b');
    notify(QString(100000, u'x'));
    notify(QString());
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(),
              QStringList({QStringLiteral("Title: ") + plain, QStringLiteral("Title: ab"),
                           QStringLiteral("Title: a?b"),
                           QStringLiteral("Title: ") + QString(100000, u'x'),
                           QStringLiteral("Title: ")}));
}

TEST_F(NotificationManagerTest, ABusThatWasRestartedIsFoundAgain) {
    {
        const SessionBus bus(folder, QStringLiteral("first"));
        const NotificationServer server(bus.address(), {});
        notify(QStringLiteral("one"));
        NotificationManager::flush(longEnough);
        EXPECT_EQ(server.texts(), QStringList({"Title: one"}));
    }
    notify(QStringLiteral("lost"));
    NotificationManager::flush(longEnough);
    const SessionBus bus(folder, QStringLiteral("first"));
    const NotificationServer server(bus.address(), {});
    notify(QStringLiteral("two"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: two"}));
}

TEST_F(NotificationManagerTest, TheUsersBusServesWhenNoneIsNamed) {
    const SessionBus bus(folder, QStringLiteral("run time%/bus"));
    const NotificationServer server(bus.address(), {});
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    folder.setEnvironment("XDG_RUNTIME_DIR", folder.path(QStringLiteral("run time%")).toUtf8());
    notify(QStringLiteral("one"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: one"}));
}

TEST_F(NotificationManagerTest, WithoutABusItIsDropped) {
    for (const char* address : {"unix:path=/nonexistent", "nonsense", "autolaunch:", ":;,="}) {
        folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", address);
        testing::internal::CaptureStderr();
        notify(QStringLiteral("lost"));
        NotificationManager::flush(longEnough);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << address;
    }
}

TEST_F(NotificationManagerTest, WithoutADaemonItIsDropped) {
    const SessionBus bus(folder);
    notify(QStringLiteral("lost"));
    NotificationManager::flush(longEnough);
    const NotificationServer server(bus.address(), {});
    notify(QStringLiteral("one"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: one"}));
}

TEST_F(NotificationManagerTest, ADaemonThatHangsHoldsUpNobody) {
    const SessionBus bus(folder);
    {
        const NotificationServer server(bus.address(), {}, NotificationServer::Manner::Hangs);
        notify(QStringLiteral("lost"));
        ASSERT_TRUE(waitUntil([&] { return server.calls() > 0; }));
        for (int i = 0; i < 500; ++i) {
            notify(QStringLiteral("also lost, or late"));
        }
        NotificationManager::flush(1);
    }
    // With the daemon gone, the bus answers in its place.
    NotificationManager::flush(longEnough);
    const NotificationServer server(bus.address(), {});
    notify(QStringLiteral("one"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: one"}));
}

TEST_F(NotificationManagerTest, ABusThatNeverAnswersHoldsUpNobody) {
    {
        const SilentBus silent(folder);
        NotificationManager::requestAuthorization();
        for (int i = 0; i < 500; ++i) {
            notify(QStringLiteral("lost"));
        }
        NotificationManager::flush(1);
    }
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {});
    NotificationManager::flush(longEnough);
    notify(QStringLiteral("one"));
    NotificationManager::flush(longEnough);
    EXPECT_EQ(server.texts(), QStringList({"Title: one"}));
}

TEST_F(NotificationManagerTest, TheDaemonIsAskedForBeforeThereIsAnythingToTell) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {});
    NotificationManager::requestAuthorization();
    EXPECT_TRUE(waitUntil([&] { return server.calls() == 1; }));
    EXPECT_EQ(server.texts(), QStringList());
}

TEST_F(NotificationManagerTest, AProgramThatEndsAtOnceStillTellsTheUser) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {});
    EXPECT_TRUE(runProgram(longEnough));
    EXPECT_EQ(server.texts(), QStringList({"Rip Verified: ISO verified."}));
}

TEST_F(NotificationManagerTest, NoBusKeepsAProgramFromEndingOrMakesItSpeak) {
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    EXPECT_TRUE(runProgram(longEnough));
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    folder.setEnvironment("XDG_RUNTIME_DIR", std::nullopt);
    folder.setEnvironment("DISPLAY", std::nullopt);
    EXPECT_TRUE(runProgram(longEnough));
}

TEST_F(NotificationManagerTest, ASilentBusDoesNotKeepAProgramFromEnding) {
    const SilentBus silent(folder);
    EXPECT_TRUE(runProgram(1));
    EXPECT_TRUE(runProgram(0));
}

TEST_F(NotificationManagerTest, AHangingDaemonDoesNotKeepAProgramFromEnding) {
    const SessionBus bus(folder);
    const NotificationServer server(bus.address(), {}, NotificationServer::Manner::Hangs);
    EXPECT_TRUE(runProgram(1));
}

TEST(EscapedForMarkupTest, OnlyTheThreeCharactersAreEscaped) {
    EXPECT_EQ(escapedForMarkup("a<b>&\"c\"'d"), "a&lt;b&gt;&amp;\"c\"'d");
    EXPECT_EQ(escapedForMarkup(""), "");
}

}  // namespace
