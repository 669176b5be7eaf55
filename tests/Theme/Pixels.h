// Colours as the tests compute them, to compare painted pixels with.
#pragma once

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <cmath>
#include <string>

// Red, green and blue as 0 to 255, not rounded.
struct Colour {
    double red;
    double green;
    double blue;

    static Colour of(const QColor& colour) {
        return {double(colour.red()), double(colour.green()), double(colour.blue())};
    }
    static Colour white(double level) { return {level * 255, level * 255, level * 255}; }

    // `above`, with that opacity, over this.
    Colour under(const Colour& above, double opacity) const {
        return {red + (above.red - red) * opacity, green + (above.green - green) * opacity,
                blue + (above.blue - blue) * opacity};
    }
    Colour plus(double amount) const { return {red + amount, green + amount, blue + amount}; }
};

// Through three evenly spaced colours; `t` from 0 to 1.
inline Colour threeStops(const QColor& first, const QColor& second, const QColor& third, double t) {
    return t < 0.5 ? Colour::of(first).under(Colour::of(second), t * 2)
                   : Colour::of(second).under(Colour::of(third), t * 2 - 1);
}

// An opaque pixel of this colour. One step a channel for the painting's own rounding, one more for
// every further layer that is blended and rounded.
inline testing::AssertionResult isColour(QRgb pixel, const Colour& expected, int tolerance = 1) {
    const double off =
        std::max({std::abs(qRed(pixel) - expected.red), std::abs(qGreen(pixel) - expected.green),
                  std::abs(qBlue(pixel) - expected.blue)});
    if (qAlpha(pixel) == 255 && off <= tolerance + 0.51)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "is " << qRed(pixel) << " " << qGreen(pixel) << " " << qBlue(pixel) << " alpha "
           << qAlpha(pixel) << ", expected " << expected.red << " " << expected.green << " "
           << expected.blue;
}

// The value of a cubic Bezier timing curve with these two control points, by bisection.
inline double timingCurve(double x1, double y1, double x2, double y2, double time) {
    const auto bezier = [](double a, double b, double s) {
        return 3 * (1 - s) * (1 - s) * s * a + 3 * (1 - s) * s * s * b + s * s * s;
    };
    double low = 0;
    double high = 1;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (bezier(x1, x2, middle) < time ? low : high) = middle;
    }
    return bezier(y1, y2, (low + high) / 2);
}
