// The whole application on a desktop that has wishes about its look.
#include <gtest/gtest.h>

#include "Appearance.h"
#include "FrameClock.h"
#include "PortalServer.h"
#include "SessionBus.h"
#include "SpindriftApp.h"
#include "WindowSupport.h"

// The only test of its program: a process follows one desktop for its whole life.
TEST(DesktopWishesTest, TheDesktopsSchemeAndItsWishForNoMotionReachTheWindows) {
    TestFolder folder;
    Preferences().set(Preference::HasCompletedOnboarding, true);
    DriveStubs::disc(folder, {});
    const SessionBus bus(folder);
    PortalServer portal(bus.address(), PortalServer::Manner::Answers, {1, false});
    ASSERT_FALSE(FrameClock::isMotionReduced());
    QApplication::setQuitOnLastWindowClosed(false);
    SpindriftApp::describe();
    SpindriftApp app;
    app.openMainWindow();
    const auto is = [](SystemAppearance::Scheme scheme, bool still) {
        return waitUntil([=] {
            return Appearance::schemeOf(QApplication::palette()) == scheme &&
                   FrameClock::isMotionReduced() == still;
        });
    };
    EXPECT_TRUE(is(SystemAppearance::Scheme::Dark, true));
    portal.changeAnimations(true);
    EXPECT_TRUE(is(SystemAppearance::Scheme::Dark, false));
    portal.changeColorScheme(2);
    EXPECT_TRUE(is(SystemAppearance::Scheme::Light, false));
    EXPECT_EQ(portal.readings(), 2);
    app.quit();
    settle();
}
