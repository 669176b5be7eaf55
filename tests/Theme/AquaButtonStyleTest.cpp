#include "AquaButtonStyle.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include "FrameClock.h"
#include "GelButtonState.h"
#include "Pixels.h"
#include "Surround.h"
#include "Waiting.h"

namespace {

GelButtonState* stateOf(const QPushButton& button) {
    auto* style = dynamic_cast<AquaButtonStyle*>(button.style());
    return style == nullptr ? nullptr : &style->state();
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
    EXPECT_EQ(stateOf(button), nullptr);
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
    ASSERT_NE(stateOf(button), nullptr);
    EXPECT_EQ(stateOf(button)->tint(), Tint::blue);
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
    EXPECT_EQ(button.sizeHint(), text + QSize(36, 10));
}

// A button at the edge of a row that leaves it no room, as in a main window.
struct Scene {
    Scene() {
        column.setContentsMargins(20, 20, 20, 20);
        column.addWidget(&row);
        inRow.setContentsMargins(0, 0, 0, 0);
        inRow.addStretch();
        inRow.addWidget(&button);
        window.resize(240, 66);
        window.setAutoFillBackground(true);
        QPalette white;
        white.setColor(QPalette::Window, Qt::white);
        window.setPalette(white);
        aquaButton(&button, true, Tint::blue);
        window.show();
    }
    QWidget window;
    QVBoxLayout column{&window};
    QWidget row;
    QHBoxLayout inRow{&row};
    QPushButton button{"Start Rip"};

    // The whole image of a gel button on white, as it should look in the window.
    QImage expected(const GelButton& look) const {
        QImage image(window.size(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        const QPoint corner = button.mapTo(&window, QPoint(0, 0));
        painter.drawImage(corner - QPoint(4, 4), look.image(1));
        return image;
    }
    GelButton look() const {
        GelButton result;
        result.text = button.text();
        result.font = GelButton::labelFont();
        result.size = button.size();
        return result;
    }
    QImage shown() { return window.grab().toImage().convertToFormat(QImage::Format_RGB32); }
};

TEST_F(AquaButtonStyleTest, TheCapsuleIsWhereTheLayoutPlacesTheButton) {
    Scene scene;
    EXPECT_EQ(scene.button.size(), scene.button.sizeHint());
    const QPoint corner = scene.button.mapTo(&scene.window, QPoint(0, 0));
    EXPECT_EQ(corner.x() + scene.button.width(), 220);
}

TEST_F(AquaButtonStyleTest, TheShadowIsSeenThoughTheRowHasNoRoomForIt) {
    Scene scene;
    EXPECT_EQ(scene.shown(), scene.expected(scene.look()));
}

TEST_F(AquaButtonStyleTest, TheShadowFollowsTheButtonsState) {
    FrameClock::setReducedMotion(true);
    Scene scene;
    scene.shown();
    GelButton look = scene.look();
    scene.button.setEnabled(false);
    look.enabled = false;
    EXPECT_EQ(scene.shown(), scene.expected(look));
    scene.button.setEnabled(true);
    scene.button.setDown(true);
    look.enabled = true;
    look.pressed = 1;
    EXPECT_EQ(scene.shown(), scene.expected(look));
}

TEST_F(AquaButtonStyleTest, TheShadowGoesWithTheLookTheButtonAndItsVisibility) {
    Scene scene;
    QImage blank(scene.window.size(), QImage::Format_RGB32);
    blank.fill(Qt::white);
    scene.button.hide();
    EXPECT_EQ(scene.shown(), blank);
    scene.button.show();
    EXPECT_EQ(scene.shown(), scene.expected(scene.look()));
    EXPECT_EQ(scene.window.findChildren<Surround*>().size(), 1);
    aquaButton(&scene.button, false, Tint::blue);
    EXPECT_EQ(scene.window.findChildren<Surround*>().size(), 0);
    auto* other = new QPushButton("Other", &scene.window);
    aquaButton(other, true, Tint::gray);
    EXPECT_EQ(scene.window.findChildren<Surround*>().size(), 1);
    delete other;
    EXPECT_EQ(scene.window.findChildren<Surround*>().size(), 0);
}

TEST_F(AquaButtonStyleTest, PressingTakesATenthOfASecondAndEasesOut) {
    GelButtonState state(Tint::blue);
    QVariantAnimation& animation = state.pressing();
    EXPECT_EQ(animation.duration(), 100);
    EXPECT_EQ(animation.loopCount(), 1);
    animation.setStartValue(0.0);
    animation.setEndValue(1.0);
    for (const int time : {0, 10, 25, 50, 75, 90, 100}) {
        animation.setCurrentTime(time);
        EXPECT_NEAR(state.pressedAmount(), timingCurve(0, 0, 0.58, 1, time / 100.0), 0.005) << time;
    }
}

TEST_F(AquaButtonStyleTest, PressingAndReleasingAreBothAnimated) {
    QPushButton button("Cancel");
    aquaButton(&button, true, Tint::gray);
    button.show();
    button.grab();
    EXPECT_EQ(stateOf(button)->pressedAmount(), 0);
    mouse(button, QEvent::MouseButtonPress);
    button.grab();
    EXPECT_LT(stateOf(button)->pressedAmount(), 1) << "it begins where it was";
    EXPECT_TRUE(waitUntil([&] { return stateOf(button)->pressedAmount() == 1; }));
    mouse(button, QEvent::MouseButtonRelease);
    button.grab();
    EXPECT_GT(stateOf(button)->pressedAmount(), 0);
    EXPECT_TRUE(waitUntil([&] { return stateOf(button)->pressedAmount() == 0; }));
}

TEST_F(AquaButtonStyleTest, AButtonThatIsReleasedAndDisabledAtOnceComesBackReleased) {
    Scene scene;
    GelButtonState& state = *stateOf(scene.button);
    scene.button.setDown(true);
    ASSERT_TRUE(waitUntil([&state] { return state.pressedAmount() == 1; }));
    scene.button.setDown(false);
    scene.button.setEnabled(false);
    EXPECT_TRUE(waitUntil([&state] { return state.pressedAmount() == 0; }));
    scene.button.setEnabled(true);
    EXPECT_EQ(scene.shown(), scene.expected(scene.look()));
}

TEST_F(AquaButtonStyleTest, AReleaseInTheMiddleGoesBackFromThere) {
    QPushButton button("Cancel");
    aquaButton(&button, true, Tint::gray);
    button.show();
    button.setDown(true);
    button.grab();
    QVariantAnimation& animation = stateOf(button)->pressing();
    animation.pause();
    animation.setCurrentTime(50);
    const double middle = stateOf(button)->pressedAmount();
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
    EXPECT_EQ(stateOf(button)->pressedAmount(), 1);
    button.setDown(false);
    button.grab();
    EXPECT_EQ(stateOf(button)->pressedAmount(), 0);
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
    EXPECT_EQ(stateOf(button)->pressedAmount(), 0);
    EXPECT_NE(stateOf(button)->pressing().state(), QAbstractAnimation::Running);
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
    Scene scene;
    scene.window.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return scene.window.isActiveWindow(); }));
    scene.button.setFocus(Qt::TabFocusReason);
    scene.window.setAttribute(Qt::WA_KeyboardFocusChange);
    ASSERT_TRUE(scene.button.hasFocus());
    GelButton look = scene.look();
    EXPECT_NE(scene.shown(), scene.expected(look));
    look.focused = true;
    EXPECT_EQ(scene.shown(), scene.expected(look));
}

}  // namespace
