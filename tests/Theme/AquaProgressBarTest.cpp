#include "AquaProgressBar.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QCoreApplication>
#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <cmath>

#include "FrameClock.h"
#include "Waiting.h"

namespace {

double g_now = 0;

class AquaProgressBarTest : public testing::Test {
protected:
    AquaProgressBarTest() {
        g_now = 50;
        FrameClock::setTimeSource([] { return g_now; });
    }
    ~AquaProgressBarTest() override {
        FrameClock::setTimeSource({});
        FrameClock::setReducedMotion(false);
    }
    static FrameClock* clockOf(const AquaProgressBar& bar) { return bar.findChild<FrameClock*>(); }
};

TEST_F(AquaProgressBarTest, IsFourteenPointsHighAndTakesTheWidthItIsOffered) {
    QWidget window;
    QVBoxLayout layout(&window);
    layout.setContentsMargins(20, 20, 20, 20);
    AquaProgressBar bar;
    layout.addWidget(&bar);
    layout.addStretch();
    window.resize(460, 300);
    window.show();
    layout.activate();
    EXPECT_EQ(bar.size(), QSize(420, 14));
}

TEST_F(AquaProgressBarTest, ShowsTheBarAsItIsDrawn) {
    AquaProgressBar bar;
    bar.resize(420, 14);
    bar.setFraction(0.4);
    bar.show();
    g_now += 0.125;
    QImage expected(420, 14, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    QPainter painter(&expected);
    GelBar().paint(painter, QRectF(0, 0, 420, 14), 0.4, 4.5);
    painter.end();
    QImage shown(420, 14, QImage::Format_ARGB32_Premultiplied);
    shown.fill(Qt::transparent);
    bar.render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
    EXPECT_EQ(shown, expected);
}

TEST_F(AquaProgressBarTest, ThePhaseBeginsAtNothingWhenTheBarIsFirstShown) {
    AquaProgressBar bar;
    g_now += 0.3;
    bar.show();
    EXPECT_NEAR(bar.phase(), 0, 1e-9);
    g_now += 0.25;
    EXPECT_NEAR(bar.phase(), 9, 1e-9);
}

TEST_F(AquaProgressBarTest, ALateFrameDoesNotChangeTheSpeed) {
    AquaProgressBar bar;
    bar.show();
    double previous = 0;
    // Frames after 33, 33, 100 and 7 milliseconds: the way is always 36 points a second.
    for (const double wait : {0.033, 0.033, 0.1, 0.007}) {
        g_now += wait;
        EXPECT_NEAR(bar.phase() - previous, 36 * wait, 1e-6);
        previous = bar.phase();
    }
}

TEST_F(AquaProgressBarTest, HidingAndShowingAgainDoesNotRestartTheStripes) {
    AquaProgressBar bar;
    bar.show();
    g_now += 0.25;
    bar.hide();
    bar.show();
    EXPECT_NEAR(bar.phase(), 9, 1e-9);
}

TEST_F(AquaProgressBarTest, StripesMoveOnlyWhileThereIsAFillToSee) {
    AquaProgressBar bar;
    bar.show();
    ASSERT_TRUE(waitUntil([&] { return clockOf(bar)->isRunning(); }));
    bar.setFraction(0.0);
    EXPECT_FALSE(clockOf(bar)->isRunning());
    bar.setFraction(-1.0);
    EXPECT_FALSE(clockOf(bar)->isRunning());
    bar.setFraction(0.2);
    EXPECT_TRUE(clockOf(bar)->isRunning());
    bar.setFraction(std::nan(""));
    EXPECT_TRUE(clockOf(bar)->isRunning());
    bar.setEnabled(false);
    EXPECT_FALSE(clockOf(bar)->isRunning());
}

// Counts how often a widget is painted on the screen.
class PaintCount final : public QObject {
public:
    explicit PaintCount(QWidget& widget) { widget.installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
    int count = 0;
};

TEST_F(AquaProgressBarTest, EveryFrameAndEveryWishForNoMotionIsPainted) {
    AquaProgressBar bar;
    PaintCount paints(bar);
    bar.show();
    EXPECT_TRUE(waitUntil([&paints] { return paints.count >= 5; }));
    // With no frames under way, only the wish can be the reason for another painting.
    bar.setFraction(0.0);
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
    const int before = paints.count;
    FrameClock::setReducedMotion(true);
    EXPECT_TRUE(waitUntil([&] { return paints.count > before; }));
}

TEST_F(AquaProgressBarTest, FromRightToLeftItBeginsOnTheRight) {
    AquaProgressBar bar;
    bar.resize(200, 14);
    bar.setFraction(0.25);
    bar.setLayoutDirection(Qt::RightToLeft);
    const QImage shown = bar.grab().toImage();
    const auto isBlue = [&shown](int x) {
        return qBlue(shown.pixel(x, 7)) > qRed(shown.pixel(x, 7)) + 10;
    };
    EXPECT_TRUE(isBlue(190));
    EXPECT_FALSE(isBlue(10));
}

TEST_F(AquaProgressBarTest, InAHigherSpaceItKeepsItsHeightInTheMiddle) {
    AquaProgressBar bar;
    bar.resize(200, 34);
    QImage shown(bar.size(), QImage::Format_ARGB32_Premultiplied);
    shown.fill(Qt::transparent);
    bar.render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
    for (int y = 0; y < 34; ++y)
        EXPECT_EQ(qAlpha(shown.pixel(100, y)), y >= 10 && y < 24 ? 255 : 0) << y;
}

TEST_F(AquaProgressBarTest, ReducedMotionHoldsTheStripesStill) {
    AquaProgressBar bar;
    bar.resize(200, 14);
    bar.show();
    FrameClock::setReducedMotion(true);
    const QImage first = bar.grab().toImage();
    g_now += 0.2;
    EXPECT_EQ(bar.grab().toImage(), first);
    EXPECT_EQ(bar.phase(), 0);
    FrameClock::setReducedMotion(false);
    EXPECT_NE(bar.grab().toImage(), first);
}

TEST_F(AquaProgressBarTest, AssistiveProgramsSeeAProgressBarAndItsValue) {
    AquaProgressBar bar;
    bar.setFraction(0.25);
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&bar);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::ProgressBar);
    QAccessibleValueInterface* value = interface->valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->minimumValue().toInt(), 0);
    EXPECT_EQ(value->maximumValue().toInt(), 1000);
    EXPECT_EQ(value->currentValue().toInt(), 250);
    bar.setFraction(1.0);
    EXPECT_EQ(value->currentValue().toInt(), 1000);
    bar.setFraction(7.0);
    EXPECT_EQ(value->currentValue().toInt(), 1000);
    bar.setFraction(-7.0);
    EXPECT_EQ(value->currentValue().toInt(), 0);
}

TEST_F(AquaProgressBarTest, AnAbsentFractionIsABusyBarForAssistivePrograms) {
    AquaProgressBar bar;
    bar.setFraction(0.5);
    bar.setFraction(std::nullopt);
    EXPECT_EQ(bar.minimum(), bar.maximum());
    EXPECT_EQ(bar.fraction(), std::nullopt);
    bar.setFraction(0.5);
    EXPECT_EQ(bar.value(), 500);
}

}  // namespace
