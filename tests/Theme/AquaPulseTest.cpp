#include "AquaPulse.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "Aqua.h"
#include "AquaButtonStyle.h"
#include "FrameClock.h"
#include "PinstripeBackground.h"
#include "Pixels.h"
#include "Waiting.h"

namespace {

double g_pulseTime = 0;

class AquaPulseTest : public testing::Test {
protected:
    AquaPulseTest() {
        g_pulseTime = 100;
        FrameClock::setTimeSource([] { return g_pulseTime; });
    }
    ~AquaPulseTest() override {
        FrameClock::setTimeSource({});
        FrameClock::setReducedMotion(false);
    }
};

AquaPulse* glowIn(const QWidget& window) {
    return window.findChild<AquaPulse*>();
}

QImage painted(const QImage& glow, double brightness) {
    QImage image(400, 200, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    AquaPulse::paint(painter, QPointF(200, 100), glow, brightness);
    return image;
}

// How far above the centre the glow has half its strength, in points.
double halfHeight(const QImage& image) {
    const double half = qAlpha(image.pixel(200, 100)) / 2.0;
    for (int y = 99; y > 0; --y) {
        const int above = qAlpha(image.pixel(200, y - 1));
        const int here = qAlpha(image.pixel(200, y));
        if (above <= half)
            return 100 - (y + 0.5 - (here - half) / (here - above));
    }
    return 0;
}

TEST_F(AquaPulseTest, SwellsInNineTenthsOfASecondAndFadesInAsMany) {
    EXPECT_NEAR(AquaPulse::brightness(0), 0, 1e-6);
    EXPECT_NEAR(AquaPulse::brightness(0.45), 0.5, 1e-3);
    EXPECT_NEAR(AquaPulse::brightness(0.9), 1, 1e-6);
    EXPECT_NEAR(AquaPulse::brightness(1.35), 0.5, 1e-3);
    EXPECT_NEAR(AquaPulse::brightness(1.8), 0, 1e-6);
    EXPECT_NEAR(AquaPulse::brightness(1800.9), 1, 1e-3);
}

TEST_F(AquaPulseTest, EasesInAndOutBothWays) {
    for (double share = 0; share <= 1; share += 0.05) {
        const double expected = timingCurve(0.42, 0, 0.58, 1, share);
        EXPECT_NEAR(AquaPulse::brightness(0.9 * share), expected, 0.002) << share;
        EXPECT_NEAR(AquaPulse::brightness(1.8 - 0.9 * share), expected, 0.002) << share;
    }
}

TEST_F(AquaPulseTest, OpacityAndScaleHaveTheirEndsAndTheirMiddle) {
    EXPECT_DOUBLE_EQ(AquaPulse::opacity(0), 0.35);
    EXPECT_DOUBLE_EQ(AquaPulse::opacity(0.5), 0.625);
    EXPECT_DOUBLE_EQ(AquaPulse::opacity(1), 0.9);
    EXPECT_DOUBLE_EQ(AquaPulse::scale(0), 1.0);
    EXPECT_DOUBLE_EQ(AquaPulse::scale(0.5), 1.04);
    EXPECT_DOUBLE_EQ(AquaPulse::scale(1), 1.08);
}

TEST_F(AquaPulseTest, TheGlowIsTheMiddleBlueBlurredBySixPoints) {
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        const QImage glow = AquaPulse::glow(QSizeF(200, 60), ratio);
        const int column = glow.width() / 2;
        const QColor centre = glow.pixelColor(column, glow.height() / 2);
        EXPECT_GE(centre.alpha(), 254);
        EXPECT_NEAR(centre.red(), Aqua::blueMid().red(), 1);
        EXPECT_NEAR(centre.green(), Aqua::blueMid().green(), 1);
        EXPECT_NEAR(centre.blue(), Aqua::blueMid().blue(), 1);

        // The upper edge's profile is the integral of the blur's kernel.
        double sum = 0;
        double mean = 0;
        double square = 0;
        for (int y = 1; y < glow.height() / 2; ++y) {
            const double step = qAlpha(glow.pixel(column, y)) - qAlpha(glow.pixel(column, y - 1));
            sum += step;
            mean += step * y / ratio;
            square += step * y * y / ratio / ratio;
        }
        mean /= sum;
        EXPECT_NEAR(std::sqrt(square / sum - mean * mean), 6, 0.5) << ratio;
        EXPECT_NEAR(mean, (glow.height() / ratio - 60) / 2, 0.6) << ratio;
    }
}

TEST_F(AquaPulseTest, NothingOfTheGlowIsCutOff) {
    const QImage glow = AquaPulse::glow(QSizeF(100, 26), 1);
    for (int x = 0; x < glow.width(); ++x)
        EXPECT_LE(qAlpha(glow.pixel(x, 0)), 1);
    for (int y = 0; y < glow.height(); ++y)
        EXPECT_LE(qAlpha(glow.pixel(0, y)), 1);
}

TEST_F(AquaPulseTest, PaintsWithTheOpacityAndTheScaleOfTheMoment) {
    const QImage glow = AquaPulse::glow(QSizeF(200, 60), 1);
    const double dimHeight = halfHeight(painted(glow, 0));
    EXPECT_NEAR(dimHeight, 30, 0.5);
    for (const double brightness : {0.0, 0.5, 1.0}) {
        const QImage image = painted(glow, brightness);
        EXPECT_NEAR(qAlpha(image.pixel(200, 100)), AquaPulse::opacity(brightness) * 255, 2);
        EXPECT_NEAR(halfHeight(image), 30 * AquaPulse::scale(brightness), 0.5);
    }
}

TEST_F(AquaPulseTest, WithoutItNothingIsAdded) {
    QWidget window;
    QPushButton button("Start Rip", &window);
    aquaPulse(&button, false);
    EXPECT_EQ(glowIn(window), nullptr);
    EXPECT_TRUE(button.children().isEmpty());
}

class PulsingWindow : public AquaPulseTest {
protected:
    PulsingWindow() {
        window.resize(300, 120);
        button.setGeometry(84, 44, 132, 26);
        aquaButton(&button, true, Tint::blue);
        aquaPulse(&button, true);
        window.show();
    }
    QWidget window;
    QPushButton button{"Start Rip", &window};
};

TEST_F(PulsingWindow, TheGlowLiesBehindTheViewAndAroundIt) {
    AquaPulse* glow = glowIn(window);
    ASSERT_NE(glow, nullptr);
    const QObjectList& children = window.children();
    auto* shadow = window.findChildren<Surround*>().value(0) == glow
                       ? window.findChildren<Surround*>().value(1)
                       : window.findChildren<Surround*>().value(0);
    ASSERT_NE(shadow, nullptr);
    EXPECT_LT(children.indexOf(glow), children.indexOf(shadow));
    EXPECT_LT(children.indexOf(shadow), children.indexOf(&button));
    EXPECT_TRUE(glow->isVisible());
    // Three standard deviations on each side, at the largest scale.
    const QRectF capsule = button.geometry();
    EXPECT_TRUE(QRectF(glow->geometry())
                    .contains(capsule.adjusted(-18 * 1.08, -18 * 1.08, 18 * 1.08, 18 * 1.08)));
    EXPECT_EQ(window.childAt(button.geometry().topLeft() - QPoint(3, 3)), nullptr)
        << "the mouse does not feel it";
}

TEST_F(PulsingWindow, TheGlowBeginsDimAndGrowsBright) {
    const auto aboveTheButton = [this] {
        const QRgb pixel = window.grab().toImage().pixel(150, 36);
        return qBlue(pixel) - qRed(pixel);
    };
    const int dim = aboveTheButton();
    g_pulseTime += 0.9;
    const int bright = aboveTheButton();
    EXPECT_GT(bright, dim * 2);
    g_pulseTime += 0.9;
    EXPECT_EQ(aboveTheButton(), dim);
}

TEST_F(PulsingWindow, InTheWindowLieTheGlowTheShadowAndTheButtonInThisOrder) {
    QPalette white;
    white.setColor(QPalette::Window, Qt::white);
    window.setPalette(white);
    for (const double seconds : {0.0, 0.45, 0.9, 1.35}) {
        g_pulseTime = 100 + seconds;
        QImage expected(window.size(), QImage::Format_RGB32);
        expected.fill(Qt::white);
        QPainter painter(&expected);
        const QRectF frame(button.geometry());
        AquaPulse::paint(painter, frame.center(), AquaPulse::glow(frame.size(), 1),
                         AquaPulse::brightness(seconds));
        GelButton look;
        look.text = button.text();
        look.font = GelButton::labelFont();
        look.size = frame.size();
        painter.drawImage(frame.topLeft() - QPointF(4, 4), look.image(1));
        painter.end();
        const QImage shown = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
        int furthest = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const QColor a = shown.pixelColor(x, y);
                const QColor b = expected.pixelColor(x, y);
                furthest =
                    std::max({furthest, std::abs(a.red() - b.red()),
                              std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
            }
        }
        EXPECT_LE(furthest, 1) << seconds;
    }
}

TEST_F(PulsingWindow, TakenAwayItIsGoneAndComesBackDim) {
    const QImage dim = window.grab().toImage();
    g_pulseTime += 0.7;
    const QImage later = window.grab().toImage();
    EXPECT_NE(later, dim);
    aquaPulse(&button, true);
    EXPECT_EQ(window.grab().toImage(), later) << "asking again restarts nothing";
    aquaPulse(&button, false);
    EXPECT_EQ(glowIn(window), nullptr);
    aquaPulse(&button, true);
    EXPECT_EQ(window.grab().toImage(), dim);
}

TEST_F(PulsingWindow, EveryFrameIsPainted) {
    struct Counting final : QObject {
        bool eventFilter(QObject* watched, QEvent* event) override {
            paints += event->type() == QEvent::Paint ? 1 : 0;
            return QObject::eventFilter(watched, event);
        }
        int paints = 0;
    } counting;
    glowIn(window)->installEventFilter(&counting);
    EXPECT_TRUE(waitUntil([&counting] { return counting.paints >= 5; }));
}

TEST_F(PulsingWindow, TheGlowFollowsTheView) {
    button.move(100, 60);
    QPoint centre = button.geometry().center();
    EXPECT_NEAR(glowIn(window)->geometry().center().x(), centre.x(), 1);
    EXPECT_NEAR(glowIn(window)->geometry().center().y(), centre.y(), 1);
    button.resize(180, 40);
    centre = button.geometry().center();
    EXPECT_NEAR(glowIn(window)->geometry().center().x(), centre.x(), 1);
    EXPECT_GT(glowIn(window)->width(), 180);
}

TEST_F(PulsingWindow, TheGlowHidesAndEndsWithTheView) {
    button.hide();
    EXPECT_FALSE(glowIn(window)->isVisible());
    button.show();
    EXPECT_TRUE(glowIn(window)->isVisible());
    auto* other = new QPushButton("Other", &window);
    aquaPulse(other, true);
    EXPECT_EQ(window.findChildren<AquaPulse*>().size(), 2);
    delete other;
    EXPECT_EQ(window.findChildren<AquaPulse*>().size(), 1);
}

TEST_F(PulsingWindow, ReducedMotionLeavesAStillGlow) {
    FrameClock::setReducedMotion(true);
    const QImage first = window.grab().toImage();
    g_pulseTime += 0.4;
    EXPECT_EQ(window.grab().toImage(), first);
    EXPECT_EQ(glowIn(window)->findChild<FrameClock*>()->isRunning(), false);
}

TEST_F(PulsingWindow, TheAnimationStopsWhileTheViewIsDisabledOrTheWindowHidden) {
    auto* clock = glowIn(window)->findChild<FrameClock*>();
    ASSERT_TRUE(waitUntil([&] { return clock->isRunning(); }));
    button.setEnabled(false);
    EXPECT_FALSE(clock->isRunning());
    button.setEnabled(true);
    EXPECT_TRUE(clock->isRunning());
    window.hide();
    EXPECT_FALSE(clock->isRunning());
}

TEST_F(AquaPulseTest, ThePulseBeginsWhenTheViewAppearsHoweverLongItWasMadeBefore) {
    QWidget window;
    window.resize(300, 120);
    QPushButton button("Start Rip", &window);
    button.setGeometry(84, 44, 132, 26);
    aquaPulse(&button, true);
    const auto shown = [&window] { return window.grab().toImage(); };
    g_pulseTime += 0.7;
    window.show();
    const QImage first = shown();
    g_pulseTime += 0.7;
    const QImage later = shown();
    EXPECT_NE(later, first);
    window.hide();
    g_pulseTime += 1.8;
    window.show();
    EXPECT_EQ(shown(), later) << "hidden, it went on";
    aquaPulse(&button, false);
    aquaPulse(&button, true);
    EXPECT_EQ(shown(), first) << "made in a window that is there";
}

TEST_F(AquaPulseTest, AGlowWithoutRoomInItsRowLiesBehindTheRow) {
    QWidget window;
    QHBoxLayout outer(&window);
    outer.setContentsMargins(40, 40, 40, 40);
    QWidget row;
    outer.addWidget(&row);
    QHBoxLayout inner(&row);
    inner.setContentsMargins(0, 0, 0, 0);
    QPushButton button("Start Rip");
    inner.addWidget(&button);
    aquaButton(&button, true, Tint::blue);
    aquaPulse(&button, true);
    window.show();
    AquaPulse* glow = glowIn(window);
    ASSERT_NE(glow, nullptr);
    EXPECT_EQ(glow->parentWidget(), &window);
    const QObjectList& children = window.children();
    EXPECT_LT(children.indexOf(glow), children.indexOf(&row));
    const QPoint centre = button.mapTo(&window, button.rect().center());
    EXPECT_NEAR(glow->geometry().center().x(), centre.x(), 1);
    EXPECT_NEAR(glow->geometry().center().y(), centre.y(), 1);
    // The row moves, not the button in it.
    window.resize(window.width() + 60, window.height() + 30);
    outer.activate();
    const QPoint moved = button.mapTo(&window, button.rect().center());
    EXPECT_NEAR(glow->geometry().center().x(), moved.x(), 1);
    EXPECT_NEAR(glow->geometry().center().y(), moved.y(), 1);
}

// As in a main window: a row in the corner of a content with margins of 20 points.
struct RowInAContent {
    RowInAContent() {
        frame.setContentsMargins(0, 0, 0, 0);
        frame.addWidget(&content);
        column.setContentsMargins(20, 20, 20, 20);
        column.addStretch();
        column.addWidget(&row);
        inRow.setContentsMargins(0, 0, 0, 0);
        inRow.addStretch();
        inRow.addWidget(&button);
        window.resize(460, 200);
        aquaButton(&button, true, Tint::blue);
    }
    QWidget window;
    QVBoxLayout frame{&window};
    QWidget content;
    QVBoxLayout column{&content};
    QWidget row;
    QHBoxLayout inRow{&row};
    QPushButton button{"Start Rip"};

    // How blue it is four points left of the capsule.
    int beside() {
        const QImage image = window.grab().toImage();
        const QPoint left = button.mapTo(&window, QPoint(-4, button.height() / 2));
        const QColor colour = image.pixelColor(left);
        return colour.blue() - colour.red();
    }
};

TEST_F(AquaPulseTest, AGlowIsSeenOnPinstripesThatWereThereBefore) {
    RowInAContent scene;
    PinstripeBackground background(&scene.content);
    scene.window.show();
    const int without = scene.beside();
    aquaPulse(&scene.button, true);
    g_pulseTime += 0.9;
    EXPECT_EQ(glowIn(scene.window)->parentWidget(), &scene.content);
    EXPECT_GT(scene.beside(), without + 40);
}

TEST_F(AquaPulseTest, AGlowIsSeenOnPinstripesThatComeLater) {
    RowInAContent scene;
    scene.window.show();
    aquaPulse(&scene.button, true);
    g_pulseTime += 0.9;
    const int before = scene.beside();
    EXPECT_GT(before, 40);
    PinstripeBackground background(&scene.content);
    background.show();
    EXPECT_GT(scene.beside(), 40);
}

TEST_F(AquaPulseTest, AGlowDoesNotGoBehindAnOpaqueGround) {
    RowInAContent scene;
    scene.column.setContentsMargins(2, 2, 2, 2);
    scene.content.setAutoFillBackground(true);
    scene.window.show();
    aquaPulse(&scene.button, true);
    EXPECT_EQ(glowIn(scene.window)->parentWidget(), &scene.content);
}

TEST_F(AquaPulseTest, AViewWithoutAParentHasNoGlow) {
    QPushButton button("Start Rip");
    aquaPulse(&button, true);
    button.show();
    EXPECT_EQ(QApplication::topLevelWidgets().count(&button), 1);
    for (const QWidget* widget : QApplication::topLevelWidgets())
        EXPECT_TRUE(widget == &button || !widget->isVisible());
}

}  // namespace
