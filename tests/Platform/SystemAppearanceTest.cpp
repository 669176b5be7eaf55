#include "SystemAppearance.h"

#include <gmock/gmock.h>

#include <QProcess>

#include "PortalServer.h"
#include "SessionBus.h"
#include "TestFolder.h"
#include "Waiting.h"

namespace {

using Manner = PortalServer::Manner;
using SystemAppearance::Scheme;

// What a program sees of the appearance, from outside.
class Probe final {
public:
    Probe() { m_process.start(QStringLiteral(APPEARANCE_PROBE), {}); }
    ~Probe() { end(); }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    // Waits for this state; false when it never comes.
    bool reaches(const char* state) {
        return waitUntil([&] { return isNow(state); });
    }

    // Whether this is the last state that it has told of.
    bool isNow(const char* state) {
        while (m_process.canReadLine()) {
            m_lines << QString::fromLatin1(m_process.readLine().trimmed());
        }
        return !m_lines.isEmpty() && m_lines.last() == QLatin1String(state);
    }

    // All states so far, the first included.
    const QStringList& lines() const { return m_lines; }

    void forget() { m_lines.clear(); }
    void ask() { m_process.write("state\n"); }

    // Whether it ended by itself, and well.
    bool end() {
        m_process.closeWriteChannel();
        return m_process.state() == QProcess::NotRunning ||
               (m_process.waitForFinished(60000) &&
                m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0);
    }

private:
    QProcess m_process;
    QStringList m_lines;
};

class SystemAppearanceTest : public testing::Test {
protected:
    void style(const QByteArray& value) const {
        folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                     "[General]\nAppleInterfaceStyle=" + value + "\n");
    }

    TestFolder folder;
};

TEST_F(SystemAppearanceTest, WithoutAnyWordItIsLightAndMoves) {
    EXPECT_EQ(SystemAppearance::current(), Scheme::Light);
    EXPECT_FALSE(SystemAppearance::reducedMotion());
}

TEST_F(SystemAppearanceTest, ThePreferenceDarkIsDark) {
    style("Dark");
    EXPECT_EQ(SystemAppearance::current(), Scheme::Dark);
}

TEST_F(SystemAppearanceTest, ThePreferenceDarkInLowerCaseIsLight) {
    style("dark");
    EXPECT_EQ(SystemAppearance::current(), Scheme::Light);
}

TEST_F(SystemAppearanceTest, AnyOtherPreferenceIsLight) {
    // Of different lengths, so that each is a new file to whoever looks at its size.
    for (const char* value : {"", "1", "DARK", "Light", "Darker", "Dark Aqua"}) {
        style(value);
        EXPECT_EQ(SystemAppearance::current(), Scheme::Light) << value;
    }
}

TEST_F(SystemAppearanceTest, WithoutABusItIsLight) {
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    Probe probe;
    EXPECT_TRUE(probe.reaches("light moving"));
    EXPECT_TRUE(probe.end());
}

TEST_F(SystemAppearanceTest, ABusThatIsNotThereIsNoHarm) {
    folder.setEnvironment("DBUS_SESSION_BUS_ADDRESS",
                          "unix:path=" + folder.path(QStringLiteral("nothing")).toUtf8());
    Probe probe;
    EXPECT_TRUE(probe.reaches("light moving"));
    EXPECT_TRUE(probe.end());
}

TEST_F(SystemAppearanceTest, ABusThatNeverAnswersCostsTheProgramNothing) {
    const SilentBus bus(folder);
    Probe probe;
    EXPECT_TRUE(probe.reaches("light moving"));
    EXPECT_TRUE(probe.end());
}

TEST_F(SystemAppearanceTest, APortalThatPrefersDarkMakesItDark) {
    const SessionBus bus(folder);
    for (const Manner manner : {Manner::Answers, Manner::AnswersPlainly}) {
        const PortalServer portal(bus.address(), manner, {1, true});
        Probe probe;
        EXPECT_TRUE(probe.reaches("dark moving"));
    }
}

TEST_F(SystemAppearanceTest, APortalThatPrefersLightOrNothingLeavesItLight) {
    const SessionBus bus(folder);
    for (const unsigned scheme : {0U, 2U, 3U}) {
        const PortalServer portal(bus.address(), Manner::Answers, {scheme, false});
        Probe probe;
        // The scheme is answered before the motion.
        EXPECT_TRUE(probe.reaches("light still"));
        EXPECT_THAT(probe.lines(), testing::Each(testing::AnyOf(u"light moving", u"light still")));
    }
}

TEST_F(SystemAppearanceTest, ADesktopWithoutAnimationsReducesMotion) {
    const SessionBus bus(folder);
    for (const Manner manner : {Manner::Answers, Manner::AnswersPlainly}) {
        const PortalServer portal(bus.address(), manner, {1, false});
        Probe probe;
        EXPECT_TRUE(probe.reaches("dark still"));
    }
}

TEST_F(SystemAppearanceTest, EachSettingIsReadOnceHoweverOftenItIsPrepared) {
    const SessionBus bus(folder);
    const PortalServer portal(bus.address(), Manner::Answers, {1, false});
    Probe probe;
    EXPECT_TRUE(probe.reaches("dark still"));
    EXPECT_TRUE(probe.end());
    EXPECT_EQ(portal.readings(), 2);
}

TEST_F(SystemAppearanceTest, ThePreferenceOutweighsThePortal) {
    const SessionBus bus(folder);
    {
        style("Light");
        const PortalServer portal(bus.address(), Manner::Answers, {1, false});
        Probe probe;
        EXPECT_TRUE(probe.reaches("light still"));
        EXPECT_FALSE(probe.lines().contains(QStringLiteral("dark moving")));
    }
    style("Dark");
    const PortalServer portal(bus.address(), Manner::Answers, {0, false});
    Probe probe;
    EXPECT_TRUE(probe.reaches("dark still"));
}

TEST_F(SystemAppearanceTest, ChangesOfTheDesktopAreFollowed) {
    const SessionBus bus(folder);
    PortalServer portal(bus.address(), Manner::Answers, {1, true});
    Probe probe;
    EXPECT_TRUE(probe.reaches("dark moving"));
    portal.changeColorScheme(0);
    EXPECT_TRUE(probe.reaches("light moving"));
    portal.changeAnimations(false);
    EXPECT_TRUE(probe.reaches("light still"));
    portal.changeColorScheme(1);
    EXPECT_TRUE(probe.reaches("dark still"));
    portal.changeAnimations(true);
    EXPECT_TRUE(probe.reaches("dark moving"));
    portal.changeColorScheme(2);
    EXPECT_TRUE(probe.reaches("light moving"));
}

TEST_F(SystemAppearanceTest, APortalThatRefusesLeavesItLightAndItsChangesAreFollowed) {
    const SessionBus bus(folder);
    PortalServer portal(bus.address(), Manner::Refuses, {1, false});
    Probe probe;
    EXPECT_TRUE(waitUntil([&] { return portal.readings() == 2; }));
    portal.changeColorScheme(1);
    EXPECT_TRUE(probe.reaches("dark moving"));
    EXPECT_THAT(probe.lines(), testing::Each(testing::AnyOf(u"light moving", u"dark moving")));
}

TEST_F(SystemAppearanceTest, APortalThatOwesItsAnswersIsFollowedAllTheSame) {
    const SessionBus bus(folder);
    PortalServer portal(bus.address(), Manner::Hangs, {1, false});
    Probe probe;
    EXPECT_TRUE(probe.reaches("light moving"));
    EXPECT_TRUE(waitUntil([&] { return portal.readings() == 2; }));
    portal.changeColorScheme(1);
    EXPECT_TRUE(probe.reaches("dark moving"));
    EXPECT_TRUE(probe.end());
}

TEST_F(SystemAppearanceTest, ValuesOfOtherTypesAndOtherSettingsMeanNothing) {
    const SessionBus bus(folder);
    PortalServer portal(bus.address(), Manner::AnswersOddly, {1, false});
    Probe probe;
    EXPECT_TRUE(waitUntil([&] { return portal.readings() == 2; }));
    portal.changeOddly();
    portal.changeAnimations(false);
    EXPECT_TRUE(probe.reaches("light still"));
    EXPECT_THAT(probe.lines(), testing::Each(testing::AnyOf(u"light moving", u"light still")));
}

TEST_F(SystemAppearanceTest, APortalThatComesLaterIsFollowed) {
    const SessionBus bus(folder);
    Probe probe;
    EXPECT_TRUE(probe.reaches("light moving"));
    PortalServer portal(bus.address(), Manner::Answers, {0, true});
    // Until the program listens, nobody hears it.
    EXPECT_TRUE(waitUntil([&] {
        portal.changeColorScheme(1);
        return probe.isNow("dark moving");
    }));
}

TEST_F(SystemAppearanceTest, WhenTheBusGoesTheLastWordStands) {
    auto bus = std::make_unique<SessionBus>(folder);
    auto portal = std::make_unique<PortalServer>(bus->address(), Manner::Answers,
                                                 PortalServer::Settings{1, false});
    Probe probe;
    EXPECT_TRUE(probe.reaches("dark still"));
    portal.reset();
    bus.reset();
    probe.forget();
    probe.ask();
    EXPECT_TRUE(probe.reaches("dark still"));
    EXPECT_TRUE(probe.end());
}

}  // namespace
