#include "AquaButtonStyle.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPushButton>
#include <QVariantAnimation>

#include "FrameClock.h"
#include "Pixels.h"
#include "Waiting.h"

namespace {

AquaButtonStyle* styleOf(const QPushButton& button) {
    return dynamic_cast<AquaButtonStyle*>(button.style());
}

void mouse(QPushButton& button, QEvent::Type type) {
    const QPointF centre = QRectF(button.rect()).center();
    QMouseEvent event(type, centre, button.mapToGlobal(centre), Qt::LeftButton,
                      type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                      Qt::NoModifier);
    QApplication::sendEvent(&button, &event);
}

class AquaButtonStyleTest : public testing::Test {
protected:
    ~AquaButtonStyleTest() override { FrameClock::setReducedMotion(false); }
};

TEST_F(AquaButtonStyleTest, WithoutTheLookAButtonIsLeftExactlyAsItIs) {
    QPushButton button("Choose…");
    const QImage before = button.grab().toImage();
    const QFont font = button.font();
    aquaButton(&button, false, Tint::gray);
    EXPECT_EQ(button.grab().toImage(), before);
    EXPECT_EQ(button.font(), font);
    EXPECT_EQ(styleOf(button), nullptr);
    EXPECT_TRUE(button.children().isEmpty());
}

TEST_F(AquaButtonStyleTest, TakingTheLookAwayBringsTheStandardButtonBack) {
    QPushButton button("Choose…");
    const QSize hint = button.sizeHint();
    const QImage before = button.grab().toImage();
    aquaButton(&button, true, Tint::gray);
    EXPECT_NE(button.grab().toImage(), before);
    aquaButton(&button, false, Tint::gray);
    EXPECT_EQ(button.sizeHint(), hint);
    EXPECT_EQ(button.grab().toImage(), before);
    EXPECT_FALSE(button.testAttribute(Qt::WA_SetFont));
    EXPECT_FALSE(button.testAttribute(Qt::WA_SetStyle));
}

TEST_F(AquaButtonStyleTest, AFontOfTheButtonsOwnComesBackToo) {
    QPushButton button("Choose…");
    QFont own = button.font();
    own.setPixelSize(31);
    button.setFont(own);
    aquaButton(&button, true, Tint::gray);
    EXPECT_EQ(button.font().pixelSize(), 13);
    aquaButton(&button, false, Tint::gray);
    EXPECT_EQ(button.font().pixelSize(), 31);
}

TEST_F(AquaButtonStyleTest, TheTintMayChangeAndAskingAgainChangesNothing) {
    QPushButton button("Cancel");
    aquaButton(&button, true, Tint::gray);
    const QImage gray = button.grab().toImage();
    aquaButton(&button, true, Tint::gray);
    EXPECT_EQ(button.grab().toImage(), gray);
    aquaButton(&button, true, Tint::blue);
    ASSERT_NE(styleOf(button), nullptr);
    EXPECT_EQ(styleOf(button)->tint(), Tint::blue);
    EXPECT_NE(button.grab().toImage(), gray);
}

TEST_F(AquaButtonStyleTest, AButtonWithTheLookMayBeDeleted) {
    auto button = std::make_unique<QPushButton>("Cancel");
    aquaButton(button.get(), true, Tint::gray);
    button->grab();
    button.reset();
    SUCCEED() << "the sanitizers watch this one";
}

TEST_F(AquaButtonStyleTest, TheLabelHasEighteenPointsAtItsSidesAndFiveAboveAndBelow) {
    QPushButton button("Start Rip");
    aquaButton(&button, true, Tint::blue);
    const QFontMetrics metrics(GelButton::labelFont());
    const QSize text = metrics.size(Qt::TextShowMnemonic, button.text());
    const QSize capsule = button.sizeHint().shrunkBy(GelButton::margins());
    EXPECT_EQ(capsule, text + QSize(36, 10));
}

TEST_F(AquaButtonStyleTest, LayoutsPlaceTheCapsuleAndNotItsShadow) {
    QWidget window;
    QHBoxLayout layout(&window);
    layout.setContentsMargins(20, 20, 20, 20);
    QPushButton button("Start Rip");
    layout.addWidget(&button);
    aquaButton(&button, true, Tint::blue);
    window.adjustSize();
    window.show();
    layout.activate();
    EXPECT_EQ(button.geometry().marginsRemoved(GelButton::margins()),
              window.rect().marginsRemoved(QMargins(20, 20, 20, 20)));
    EXPECT_EQ(window.height() - 40, button.sizeHint().height() - 8);
}

TEST_F(AquaButtonStyleTest, WhatTheButtonShowsIsTheGelButtonsImage) {
    QPushButton button("Start Rip");
    aquaButton(&button, true, Tint::blue);
    button.resize(140, 34);
    QImage screen(140, 34, QImage::Format_ARGB32_Premultiplied);
    screen.fill(Qt::transparent);
    button.render(&screen, QPoint(), QRegion(), QWidget::RenderFlags());
    GelButton look;
    look.text = "Start Rip";
    look.font = GelButton::labelFont();
    look.size = QSizeF(132, 26);
    EXPECT_EQ(screen, look.image(1));
}

TEST_F(AquaButtonStyleTest, PressingTakesATenthOfASecondAndEasesOut) {
    AquaButtonStyle style(Tint::blue);
    QVariantAnimation& animation = style.pressing();
    EXPECT_EQ(animation.duration(), 100);
    EXPECT_EQ(animation.loopCount(), 1);
    animation.setStartValue(0.0);
    animation.setEndValue(1.0);
    for (const int time : {0, 10, 25, 50, 75, 90, 100}) {
        animation.setCurrentTime(time);
        EXPECT_NEAR(style.pressedAmount(), timingCurve(0, 0, 0.58, 1, time / 100.0), 0.005) << time;
    }
}

TEST_F(AquaButtonStyleTest, PressingAndReleasingAreBothAnimated) {
    QPushButton button("Cancel");
    aquaButton(&button, true, Tint::gray);
    button.show();
    button.grab();
    EXPECT_EQ(styleOf(button)->pressedAmount(), 0);
    mouse(button, QEvent::MouseButtonPress);
    button.grab();
    EXPECT_LT(styleOf(button)->pressedAmount(), 1) << "it begins where it was";
    EXPECT_TRUE(waitUntil([&] { return styleOf(button)->pressedAmount() == 1; }));
    mouse(button, QEvent::MouseButtonRelease);
    button.grab();
    EXPECT_GT(styleOf(button)->pressedAmount(), 0);
    EXPECT_TRUE(waitUntil([&] { return styleOf(button)->pressedAmount() == 0; }));
}

TEST_F(AquaButtonStyleTest, AReleaseInTheMiddleGoesBackFromThere) {
    QPushButton button("Cancel");
    aquaButton(&button, true, Tint::gray);
    button.show();
    button.setDown(true);
    button.grab();
    QVariantAnimation& animation = styleOf(button)->pressing();
    animation.pause();
    animation.setCurrentTime(50);
    const double middle = styleOf(button)->pressedAmount();
    ASSERT_GT(middle, 0.5);
    button.setDown(false);
    button.grab();
    EXPECT_NEAR(animation.startValue().toDouble(), middle, 1e-9);
    EXPECT_EQ(animation.endValue().toDouble(), 0);
}

TEST_F(AquaButtonStyleTest, ReducedMotionShowsThePressedLookAtOnce) {
    FrameClock::setReducedMotion(true);
    QPushButton button("Cancel");
    aquaButton(&button, true, Tint::gray);
    button.show();
    button.setDown(true);
    button.grab();
    EXPECT_EQ(styleOf(button)->pressedAmount(), 1);
    button.setDown(false);
    button.grab();
    EXPECT_EQ(styleOf(button)->pressedAmount(), 0);
}

TEST_F(AquaButtonStyleTest, ADisabledButtonDoesNotReactToAClick) {
    QPushButton button("Choose…");
    aquaButton(&button, true, Tint::gray);
    button.setEnabled(false);
    button.show();
    const QImage before = button.grab().toImage();
    mouse(button, QEvent::MouseButtonPress);
    button.setDown(true);
    EXPECT_EQ(button.grab().toImage(), before);
    EXPECT_EQ(styleOf(button)->pressedAmount(), 0);
    EXPECT_NE(styleOf(button)->pressing().state(), QAbstractAnimation::Running);
}

TEST_F(AquaButtonStyleTest, EnablingAndDisablingAreShown) {
    QPushButton button("Start Rip");
    aquaButton(&button, true, Tint::blue);
    const QImage enabled = button.grab().toImage();
    button.setEnabled(false);
    const QImage disabled = button.grab().toImage();
    EXPECT_NE(disabled, enabled);
    button.setEnabled(true);
    EXPECT_EQ(button.grab().toImage(), enabled);
}

TEST_F(AquaButtonStyleTest, ANewLabelIsShown) {
    QPushButton button("Start Rip");
    aquaButton(&button, true, Tint::blue);
    button.resize(140, 34);
    const QImage before = button.grab().toImage();
    button.setText("Rip Again");
    EXPECT_NE(button.grab().toImage(), before);
}

TEST_F(AquaButtonStyleTest, TheKeyboardsFocusCanBeSeen) {
    QWidget window;
    QHBoxLayout layout(&window);
    QPushButton other("Other");
    QPushButton button("Start Rip");
    layout.addWidget(&other);
    layout.addWidget(&button);
    aquaButton(&button, true, Tint::blue);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return window.isActiveWindow(); }));
    const QImage before = button.grab().toImage();
    button.setFocus(Qt::TabFocusReason);
    window.setAttribute(Qt::WA_KeyboardFocusChange);
    EXPECT_TRUE(button.hasFocus());
    EXPECT_NE(button.grab().toImage(), before);
}

}  // namespace
