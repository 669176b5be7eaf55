#include "GelButton.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QFontMetricsF>
#include <cmath>

#include "Aqua.h"
#include "Pixels.h"

namespace {

constexpr int margin = 4;
constexpr int width = 120;
constexpr int height = 26;

GelButton button(Tint tint, const QString& text = QString()) {
    GelButton result;
    result.tint = tint;
    result.text = text;
    result.font = GelButton::labelFont();
    result.size = QSizeF(width, height);
    return result;
}

// The face's colour so many points below the capsule's top, away from border, ends and label.
Colour face(Tint tint, double y) {
    const Colour body =
        tint == Tint::blue
            ? threeStops(Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom(), y / height)
            : threeStops(Aqua::grayTop(), Aqua::grayMid(), Aqua::grayBottom(), y / height);
    const double gloss = std::max(0.0, 0.85 * (1 - (y - 1) / (height / 2.0 - 1)));
    return body.under(Colour::white(1), gloss);
}

// Where a row or column of the image first and last is more covered than half, in points. The
// shadow is never that dense.
std::pair<double, double> extent(const QImage& image, bool horizontal) {
    const double ratio = image.devicePixelRatio();
    const int length = horizontal ? image.width() : image.height();
    const int middle = (horizontal ? image.height() : image.width()) / 2;
    int first = -1;
    int last = -1;
    for (int i = 0; i < length; ++i) {
        if (qAlpha(horizontal ? image.pixel(i, middle) : image.pixel(middle, i)) < 128)
            continue;
        if (first < 0)
            first = i;
        last = i;
    }
    return {first / ratio, (last + 1) / ratio};
}

TEST(GelButtonTest, TheFaceIsTheGradientUnderTheGlossInEveryRow) {
    for (const Tint tint : {Tint::blue, Tint::gray}) {
        for (const double ratio : {1.0, 2.0, 3.0}) {
            const QImage image = button(tint).image(ratio);
            ASSERT_EQ(image.width(), (width + 2 * margin) * ratio);
            ASSERT_EQ(image.height(), (height + 2 * margin) * ratio);
            for (int row = int(ratio); row < (height - 1) * ratio; ++row) {
                const QRgb pixel = image.pixel(int(64 * ratio), int(margin * ratio) + row);
                EXPECT_TRUE(isColour(pixel, face(tint, (row + 0.5) / ratio), 1))
                    << "row " << row << " at " << ratio;
            }
        }
    }
}

TEST(GelButtonTest, TheGradientPassesItsThreeStops) {
    // Rows whose middles lie nearest to the top, the centre and the bottom, gloss taken off.
    const QImage blue = button(Tint::blue).image(10);
    const auto at = [&blue](double y) { return blue.pixel(640, int((margin + y) * 10)); };
    EXPECT_TRUE(isColour(at(13.0), Colour::of(Aqua::blueMid()), 2));
    EXPECT_TRUE(isColour(
        at(24.9), Colour::of(Aqua::blueMid()).under(Colour::of(Aqua::blueBottom()), 11.95 / 13)));
    // Fifteen hundredths of the top's own colour shine through the gloss.
    EXPECT_TRUE(isColour(at(1.1), face(Tint::blue, 1.15), 1));
}

TEST(GelButtonTest, TheGlossIsStrongAtTheTopAndGoneAtTheCentre) {
    const QImage image = button(Tint::blue).image(10);
    const auto body = [](double y) {
        return threeStops(Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom(), y / height);
    };
    const auto gloss = [&](double y) {
        const QRgb pixel = image.pixel(640, int((margin + y) * 10));
        const double below = body(y + 0.05).red;
        return (qRed(pixel) - below) / (255 - below);
    };
    EXPECT_NEAR(gloss(1.0), 0.85, 0.02);
    EXPECT_NEAR(gloss(7.0), 0.425, 0.02);
    EXPECT_NEAR(gloss(13.0), 0, 0.01);
    EXPECT_NEAR(gloss(20.0), 0, 0.01);
}

TEST(GelButtonTest, TheBorderIsOnePointInsideTheEdge) {
    struct Case {
        Tint tint;
        Colour colour;
        double opacity;
    };
    for (const Case& c : {Case{Tint::blue, Colour::of(Aqua::blueBottom()), 0.8},
                          Case{Tint::gray, Colour::white(0.6), 1}}) {
        for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
            const QImage image = button(c.tint).image(ratio);
            const int line = std::max(1, qRound(ratio));
            const int top = qRound(margin * ratio);
            const int bottom = qRound((margin + height) * ratio) - 1;
            const double rows = bottom + 1 - top;
            const int x = int(64 * ratio);
            const auto body = [&](int row) {
                const double t = (row + 0.5) / rows;
                return c.tint == Tint::blue
                           ? threeStops(Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom(), t)
                           : threeStops(Aqua::grayTop(), Aqua::grayMid(), Aqua::grayBottom(), t);
            };
            for (int i = 0; i < line; ++i) {
                const int low = int(rows) - 1 - i;
                EXPECT_TRUE(
                    isColour(image.pixel(x, bottom - i), body(low).under(c.colour, c.opacity), 1))
                    << ratio << " line " << i;
                // At 1.5 the second pixel of the line already has some gloss below it.
                if (i < int(ratio)) {
                    EXPECT_TRUE(
                        isColour(image.pixel(x, top + i), body(i).under(c.colour, c.opacity), 1))
                        << ratio << " line " << i;
                }
            }
            EXPECT_LT(qAlpha(image.pixel(x, top - 1)), 60) << "nothing but shadow above";
            EXPECT_FALSE(isColour(image.pixel(x, bottom - line),
                                  body(int(rows) - 1 - line).under(c.colour, c.opacity), 1))
                << "the line ends after one point";
        }
    }
}

TEST(GelButtonTest, TheShadowIsBlurredByOnePointAndOnePointBelow) {
    const QImage image = button(Tint::gray).image(1);
    // A Gaussian of sigma 1 over the capsule's rows, moved down by one: what each row gets.
    const auto weight = [](int from, int to) {
        double sum = 0;
        double all = 0;
        for (int k = -3; k <= 3; ++k) {
            const double g = std::exp(-k * k / 2.0);
            all += g;
            sum += k >= from && k <= to ? g : 0;
        }
        return sum / all;
    };
    const auto alpha = [&image](int y) { return qAlpha(image.pixel(64, y)); };
    const double full = 0.18 * 255;
    EXPECT_NEAR(alpha(margin + height), full * weight(0, 3), 1);
    EXPECT_NEAR(alpha(margin + height + 1), full * weight(1, 3), 1);
    EXPECT_NEAR(alpha(margin + height + 2), full * weight(2, 3), 1);
    EXPECT_NEAR(alpha(margin + height + 3), full * weight(3, 3), 1);
    EXPECT_NEAR(alpha(margin - 1), full * weight(2, 3), 1);
    EXPECT_NEAR(alpha(margin - 2), full * weight(3, 3), 1);
    EXPECT_EQ(qRed(image.pixel(64, margin + height)), 0) << "the shadow is black";
}

TEST(GelButtonTest, TheShadowFitsIntoTheMargins) {
    for (const double ratio : {1.0, 2.0}) {
        const QImage image = button(Tint::gray).image(ratio);
        for (int x = 0; x < image.width(); ++x) {
            EXPECT_LE(qAlpha(image.pixel(x, 0)), 1);
            EXPECT_LE(qAlpha(image.pixel(x, image.height() - 1)), 1);
        }
        for (int y = 0; y < image.height(); ++y) {
            EXPECT_LE(qAlpha(image.pixel(0, y)), 1);
            EXPECT_LE(qAlpha(image.pixel(image.width() - 1, y)), 1);
        }
    }
}

TEST(GelButtonTest, PressingDarkensByEightHundredths) {
    // The middle line stays where it is when the button shrinks about its centre.
    for (const Tint tint : {Tint::blue, Tint::gray}) {
        GelButton look = button(tint);
        const QRgb released = look.image(1).pixel(64, margin + 13);
        look.pressed = 1;
        const QRgb pressed = look.image(1).pixel(64, margin + 13);
        // Two hundredths of a point nearer to the centre make no whole step.
        EXPECT_NEAR(qRed(released) - qRed(pressed), 0.08 * 255, 2);
        EXPECT_NEAR(qGreen(released) - qGreen(pressed), 0.08 * 255, 2);
        EXPECT_NEAR(qBlue(released) - qBlue(pressed), 0.08 * 255, 2);
        look.pressed = 0.5;
        const QRgb half = look.image(1).pixel(64, margin + 13);
        EXPECT_NEAR(qRed(released) - qRed(half), 0.04 * 255, 2);
    }
}

TEST(GelButtonTest, PressingShrinksToNinetyEightPercentAboutTheCentre) {
    GelButton look = button(Tint::gray);
    const auto expectExtent = [&look](double scale) {
        const QImage image = look.image(10);
        const auto [left, right] = extent(image, true);
        const auto [top, bottom] = extent(image, false);
        EXPECT_NEAR(left, 64 - 60 * scale, 0.11);
        EXPECT_NEAR(right, 64 + 60 * scale, 0.11);
        EXPECT_NEAR(top, 17 - 13 * scale, 0.11);
        EXPECT_NEAR(bottom, 17 + 13 * scale, 0.11);
    };
    expectExtent(1);
    look.pressed = 0.5;
    expectExtent(0.99);
    look.pressed = 1;
    expectExtent(0.98);
}

TEST(GelButtonTest, ADisabledButtonIsFaintAndNearlyGrey) {
    for (const Tint tint : {Tint::blue, Tint::gray}) {
        GelButton look = button(tint);
        const QImage enabled = look.image(1);
        look.enabled = false;
        const QImage disabled = look.image(1);
        for (const int y : {margin + 2, margin + 13, margin + 22}) {
            const QColor before = enabled.pixelColor(64, y);
            const double luminance =
                0.2126 * before.red() + 0.7152 * before.green() + 0.0722 * before.blue();
            const auto paled = [&](int value) {
                return (luminance + (value - luminance) * 0.3) * 0.45;
            };
            // The premultiplied components, as they are blended into the window.
            const QRgb pixel = reinterpret_cast<const QRgb*>(disabled.constScanLine(y))[64];
            EXPECT_NEAR(qAlpha(pixel), 0.45 * 255, 1);
            EXPECT_NEAR(qRed(pixel), paled(before.red()), 1);
            EXPECT_NEAR(qGreen(pixel), paled(before.green()), 1);
            EXPECT_NEAR(qBlue(pixel), paled(before.blue()), 1);
        }
        EXPECT_NEAR(qAlpha(disabled.pixel(64, margin + height)),
                    qAlpha(enabled.pixel(64, margin + height)) * 0.45, 1)
            << "the shadow is as faint as the button";
    }
}

// The pixels in which two images differ: here the label's.
struct Label {
    QRect bounds;
    QRgb strongest = 0;
};

Label label(const GelButton& look, double ratio, bool dark) {
    GelButton bare = look;
    bare.text.clear();
    const QImage with = look.image(ratio);
    const QImage without = bare.image(ratio);
    Label result;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x) {
            if (with.pixel(x, y) == without.pixel(x, y))
                continue;
            const QRgb pixel = with.pixel(x, y);
            if (result.bounds.isNull() || (dark ? qRed(pixel) < qRed(result.strongest)
                                                : qRed(pixel) > qRed(result.strongest)))
                result.strongest = pixel;
            result.bounds |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

TEST(GelButtonTest, TheLabelIsWhiteOnBlueAndNearlyBlackOnGray) {
    EXPECT_TRUE(
        isColour(label(button(Tint::blue, "HHH"), 3, false).strongest, Colour::white(1), 2));
    EXPECT_TRUE(
        isColour(label(button(Tint::gray, "HHH"), 3, true).strongest, Colour::white(0.15), 2));
}

TEST(GelButtonTest, TheLabelLiesOnTheGloss) {
    // At three quarters of the way up, the gloss would turn the label to the light grey of 0.39.
    GelButton look = button(Tint::gray, "HHHHHH");
    const QImage image = look.image(4);
    int darkest = 255;
    for (int y = int((margin + 9.5) * 4); y < (margin + 10.5) * 4; ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) == 255)
                darkest = std::min(darkest, qRed(image.pixel(x, y)));
    EXPECT_NEAR(darkest, 0.15 * 255, 1);
}

TEST(GelButtonTest, ALabelTooLongForItsButtonEndsAtTheCapsulesBorder) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        GelButton look = button(Tint::gray, "WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW");
        look.size = QSizeF(60, height);
        const QImage with = look.image(ratio);
        look.text.clear();
        const QImage without = look.image(ratio);
        EXPECT_NE(with, without);
        const int middle = with.height() / 2;
        const int left = qRound(margin * ratio);
        const int right = qRound((margin + 60) * ratio) - 1;
        for (int y = 0; y < with.height(); ++y) {
            for (int x = 0; x < with.width(); ++x) {
                EXPECT_EQ(qAlpha(with.pixel(x, y)), qAlpha(without.pixel(x, y)));
                if (x < left || x > right) {
                    EXPECT_EQ(with.pixel(x, y), without.pixel(x, y)) << x << " " << y;
                }
            }
        }
        EXPECT_TRUE(isColour(with.pixel(left, middle), Colour::white(0.6), 8)) << ratio;
        EXPECT_TRUE(isColour(with.pixel(right, middle), Colour::white(0.6), 8)) << ratio;
    }
}

TEST(GelButtonTest, AButtonWithoutRoomIsDrawnAsFarAsItGoes) {
    for (const Tint tint : {Tint::blue, Tint::gray}) {
        for (const QSizeF& size : {QSizeF(0, 0), QSizeF(0, 20), QSizeF(30, 0), QSizeF(1, 1),
                                   QSizeF(2, 30), QSizeF(0.4, 0.4)}) {
            GelButton look = button(tint, "Start Rip");
            look.size = size;
            look.pressed = 0.5;
            look.focused = true;
            const QImage image = look.image(1.5);
            EXPECT_EQ(image.size(), QSize(int(std::ceil((size.width() + 8) * 1.5 - 1e-6)),
                                          int(std::ceil((size.height() + 8) * 1.5 - 1e-6))));
            EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
        }
    }
}

TEST(GelButtonTest, TheLabelIsLucidaGrandeOfThirteenPoints) {
    EXPECT_EQ(GelButton::labelFont(), Aqua::font(13));
    EXPECT_EQ(QFontInfo(GelButton::labelFont()).pixelSize(), 13);
}

TEST(GelButtonTest, TheLabelIsInTheMiddle) {
    const Label found = label(button(Tint::gray, "Hxxxxxxx"), 1, true);
    EXPECT_NEAR(found.bounds.center().x(), 64, 2);
    EXPECT_NEAR(found.bounds.center().y(), 17, 2);
}

TEST(GelButtonTest, TheLabelsLineIsInTheMiddleOfTheCapsule) {
    const QFontMetricsF metrics(GelButton::labelFont());
    const double baseline = margin + 13 + (metrics.ascent() - metrics.descent()) / 2;
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        const QRect found = label(button(Tint::gray, "HHH"), ratio, true).bounds;
        EXPECT_NEAR(found.bottom() + 1, baseline * ratio, 1) << ratio;
        EXPECT_NEAR(found.left() + found.right() + 1, 128 * ratio, 2 * ratio) << ratio;
    }
}

TEST(GelButtonTest, TheLabelDoesNotHopWhenTheButtonIsPressed) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        GelButton look = button(Tint::gray, "Hxxxxxxx");
        const QRect released = label(look, ratio, true).bounds;
        look.pressed = 1;
        const QRect pressed = label(look, ratio, true).bounds;
        EXPECT_NEAR(pressed.bottom(), released.bottom(), 0.5 * ratio) << ratio;
    }
}

TEST(GelButtonTest, AMnemonicIsUnderlinedOnlyWhenAsked) {
    GelButton look = button(Tint::gray, "&Choose");
    const QImage plain = look.image(2);
    look.showMnemonic = true;
    EXPECT_NE(look.image(2), plain);
    look.showMnemonic = false;
    look.text = "Choose";
    EXPECT_EQ(look.image(2), plain);
}

TEST(GelButtonTest, TheKeyboardsFocusIsARingAroundTheCapsule) {
    GelButton look = button(Tint::gray);
    const QImage without = look.image(1);
    look.focused = true;
    const QImage with = look.image(1);
    const QColor ring = with.pixelColor(64, margin - 2);
    EXPECT_GT(ring.alpha(), 128);
    EXPECT_GT(ring.blue(), ring.red() + 60);
    EXPECT_EQ(with.pixel(64, margin + 13), without.pixel(64, margin + 13));
    EXPECT_EQ(qAlpha(with.pixel(64, 0)), qAlpha(without.pixel(64, 0)));
}

TEST(GelButtonTest, TheEndsAreRoundAndClearOutside) {
    const QImage image = button(Tint::blue).image(2);
    EXPECT_LT(qAlpha(image.pixel(margin * 2, margin * 2)), 20);
    EXPECT_LT(qAlpha(image.pixel(margin * 2 + 4, margin * 2 + 4)), 60);
    EXPECT_EQ(qAlpha(image.pixel(margin * 2 + 14, margin * 2 + 14)), 255);
    EXPECT_EQ(qAlpha(image.pixel(margin * 2 + 3, 34)), 255);
}

}  // namespace
