#include <gtest/gtest.h>

#include <QPushButton>
#include <array>

#include "ActionsFixture.h"
#include "Aqua.h"
#include "AquaControls.h"
#include "AquaProgressBar.h"
#include "GelButtonState.h"
#include "PinstripeBackground.h"
#include "TextStyle.h"

namespace {

using RetroModeTest = ActionsFixture;

// Absent for a standard button.
std::optional<Tint> tintOf(const QWidget* window, const char* name) {
    const auto* style =
        dynamic_cast<const AquaButtonStyle*>(named<QPushButton>(window, name)->style());
    return style == nullptr ? std::nullopt : std::optional(style->state().tint());
}

int glows(const QWidget& window) {
    int count = 0;
    for (const AquaPulse* glow : window.findChildren<AquaPulse*>()) {
        count += glow->isVisible() ? 1 : 0;
    }
    return count;
}

void setRetroMode(bool retro) {
    Preferences().set(Preference::RetroMode, retro);
    settle();
}

TEST_F(RetroModeTest, TheStartButtonIsBlueAndTheOthersAreGray) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    setRetroMode(true);
    window.open();
    EXPECT_EQ(tintOf(&window, "startButton"), Tint::blue);
    EXPECT_EQ(tintOf(&window, "chooseButton"), Tint::gray);
    EXPECT_EQ(tintOf(&window, "cancelButton"), Tint::gray);
}

TEST_F(RetroModeTest, OutsideOfItEveryButtonIsTheStandardOneAndNothingGlows) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    window.choose(folder, QStringLiteral("a.iso"));
    const QImage before = named<QWidget>(&window, "startButton")->grab().toImage();
    for (int turn = 0; turn < 2; ++turn) {
        for (const char* name : {"startButton", "chooseButton", "cancelButton"}) {
            EXPECT_EQ(tintOf(&window, name), std::nullopt) << name;
        }
        EXPECT_EQ(glows(window), 0);
        EXPECT_EQ(named<QWidget>(&window, "startButton")->grab().toImage(), before);
        setRetroMode(true);
        EXPECT_NE(named<QWidget>(&window, "startButton")->grab().toImage(), before);
        setRetroMode(false);
    }
}

TEST_F(RetroModeTest, TheStartButtonPulsesExactlyWhileItIsEnabled) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    setRetroMode(true);
    window.open();
    ASSERT_FALSE(named<QWidget>(&window, "startButton")->isEnabled());
    EXPECT_EQ(glows(window), 0);
    window.choose(folder, QStringLiteral("a.iso"));
    EXPECT_EQ(glows(window), 1);
    DriveStubs::emptyDrive(folder);
    window.content->monitor().poll();
    settle();
    EXPECT_EQ(glows(window), 0) << "without a disc it is disabled";
    DriveStubs::disc(folder, {});
    window.content->monitor().poll();
    settle();
    EXPECT_EQ(glows(window), 1);
    setRetroMode(false);
    EXPECT_EQ(glows(window), 0);
}

TEST_F(RetroModeTest, WhileARipRunsNothingPulsesAndTheGelBarShowsItsProgress) {
    HostWindow window;
    setRetroMode(true);
    startHeldRip(window);
    EXPECT_TRUE(shows(&window, "cancelButton"));
    EXPECT_EQ(glows(window), 0);
    const auto* bar = named<AquaProgressBar>(&window, "aquaProgressBar");
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->fraction(), 0.42);
    EXPECT_EQ(bar->size(), QSize(420, 14));
    window.content->session().cancel();
    ASSERT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
}

TEST_F(RetroModeTest, WhileAVerificationRunsTheGelBarKnowsNoFraction) {
    HostWindow window;
    setRetroMode(true);
    startHeldVerification(window);
    const auto* bar = named<AquaProgressBar>(&window, "aquaProgressBar");
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->fraction(), std::nullopt);
    EXPECT_EQ(tintOf(&window, "cancelButton"), Tint::gray);
    window.content->session().cancel();
    ASSERT_TRUE(waitUntil([&] { return !window.content->isWorking(); }));
}

TEST_F(RetroModeTest, TextsWithoutAFontOfTheirOwnAreLucidaGrandeOfThirteenPoints) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    const std::array texts = {named<SymbolLabel>(&window, "noDrive")->textLabel(),
                              named<SymbolLabel>(&window, "noDisc")->textLabel(),
                              named<TextLabel>(&window, "destinationPath")};
    for (int turn = 0; turn < 2; ++turn) {
        for (const TextLabel* text : texts) {
            EXPECT_EQ(text->font().families(), QApplication::font().families());
            EXPECT_EQ(QFontInfo(text->font()).pixelSize(),
                      QFontInfo(QApplication::font()).pixelSize());
        }
        setRetroMode(true);
        for (const TextLabel* text : texts) {
            EXPECT_EQ(text->font().families(), Aqua::font(13).families());
            EXPECT_EQ(text->font().pixelSize(), 13);
            EXPECT_FALSE(text->font().bold());
        }
        setRetroMode(false);
    }
}

TEST_F(RetroModeTest, TitleAndSubtitleHaveTheirOwnLucidaGrande) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    setRetroMode(true);
    window.open();
    const QFont title = named<TextLabel>(&window, "title")->font();
    EXPECT_EQ(title.families(), Aqua::font(20).families());
    EXPECT_EQ(title.pixelSize(), 20);
    EXPECT_EQ(title.weight(), QFont::Bold);
    const QFont subtitle = named<TextLabel>(&window, "subtitle")->font();
    EXPECT_EQ(subtitle.families(), Aqua::font(11).families());
    EXPECT_EQ(subtitle.pixelSize(), 11);
    EXPECT_EQ(subtitle.weight(), QFont::Normal);
    setRetroMode(false);
    EXPECT_EQ(named<TextLabel>(&window, "title")->font().families(),
              QApplication::font().families());
}

TEST_F(RetroModeTest, HeadlineAndCaptionsKeepTheDesktopsFont) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    window.open();
    for (const bool retro : {false, true}) {
        setRetroMode(retro);
        for (const char* name : {"discType", "discSize", "bytesWritten"}) {
            const QFont font = named<TextLabel>(&window, name)->font();
            EXPECT_EQ(font.families(), QApplication::font().families()) << name << retro;
            EXPECT_EQ(QFontInfo(font).pixelSize(),
                      QFontInfo(TextStyle::font(TextStyle::Style::Caption)).pixelSize())
                << name << retro;
        }
        const QFont headline = named<SymbolLabel>(&window, "discName")->textLabel()->font();
        EXPECT_EQ(headline.families(), QApplication::font().families()) << retro;
        EXPECT_TRUE(headline.bold());
    }
}

TEST_F(RetroModeTest, ThePinstripesReachToTheWindowsEdgesAndBeginAtItsTop) {
    DriveStubs::disc(folder, {});
    HostWindow window;
    // Something of the window's own above the content, as a menu bar is.
    window.layout()->setContentsMargins(0, 22, 0, 0);
    setRetroMode(true);
    window.open();
    const QImage shown = window.grab().toImage();
    ASSERT_GT(shown.height(), 60);
    for (int y = 0; y < shown.height(); ++y) {
        const QColor expected = y % 4 == 0 ? QColor(248, 249, 251) : QColor(237, 240, 245);
        for (const int x : {0, shown.width() - 1}) {
            const QColor pixel = shown.pixelColor(x, y);
            EXPECT_NEAR(pixel.red(), expected.red(), 1) << x << " " << y;
            EXPECT_NEAR(pixel.green(), expected.green(), 1) << x << " " << y;
            EXPECT_NEAR(pixel.blue(), expected.blue(), 1) << x << " " << y;
        }
    }
}

}  // namespace
