#include "GelBar.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <cmath>
#include <limits>

#include "Aqua.h"
#include "Pixels.h"

namespace {

constexpr int barWidth = 200;
constexpr int barHeight = 14;

QImage painted(std::optional<double> value, double phase, double ratio,
               Qt::LayoutDirection direction = Qt::LeftToRight) {
    QImage image(int(barWidth * ratio), int(barHeight * ratio),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    GelBar bar;
    bar.paint(painter, QRectF(0, 0, barWidth, barHeight), value, phase, direction);
    return image;
}

// How far a point lies inside a stripe; negative outside of all.
double depthInStripe(double x, double y, double phase) {
    const double offset = x + y - (phase - barHeight);
    const double inPeriod = offset - std::floor(offset / 18) * 18;
    return inPeriod < 9 ? std::min(inPeriod, 9 - inPeriod) : -std::min(inPeriod - 9, 18 - inPeriod);
}

bool isBlue(QRgb pixel) {
    return qBlue(pixel) > qRed(pixel) + 10;
}

TEST(GelBarTest, TheFillIsTheValuesShareOfTheWidth) {
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(0.0, 420), 0);
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(0.25, 420), 105);
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(1.0, 420), 420);
}

TEST(GelBarTest, OddValuesFillNothingOrEverything) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(-1.0, 420), 0);
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(-infinity, 420), 0);
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(2.0, 420), 420);
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(infinity, 420), 420);
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(std::nan(""), 420), 420);
    EXPECT_DOUBLE_EQ(GelBar::fillWidth(std::nullopt, 420), 420);
}

TEST(GelBarTest, ThePaintedFillIsAsWide) {
    struct Case {
        std::optional<double> value;
        int filled;
    };
    for (const Case& c : {Case{-1.0, 0}, Case{0.0, 0}, Case{0.25, 50}, Case{1.0, 200},
                          Case{2.0, 200}, Case{std::nan(""), 200}, Case{std::nullopt, 200}}) {
        const QImage image = painted(c.value, 0, 1);
        int blue = 0;
        for (int x = 0; x < barWidth; ++x)
            blue += isBlue(image.pixel(x, 7)) ? 1 : 0;
        EXPECT_EQ(blue, c.filled) << c.value.value_or(-99);
    }
}

// Where the first stripe that begins after `from` begins on this row, and how wide it is there, in
// pixels, from the lightness of a bar that is painted with and without the stripes' light.
struct Found {
    double start = 0;
    double width = 0;
};

Found stripeOnRow(const QImage& image, int row, int from) {
    int dark = 1000;
    int light = 0;
    for (int x = from; x < image.width() - 60; ++x) {
        dark = std::min(dark, qRed(image.pixel(x, row)));
        light = std::max(light, qRed(image.pixel(x, row)));
    }
    const auto lit = [&](int x) {
        return double(qRed(image.pixel(x, row)) - dark) / (light - dark);
    };
    int x = from;
    while (lit(x) > 0.01)
        ++x;
    while (lit(x) <= 0.01)
        ++x;
    Found found;
    for (found.start = x; lit(x) > 0.01; ++x)
        found.width += lit(x);
    return found;
}

TEST(GelBarTest, AStripeLeansByFortyFiveDegreesWhateverTheHeight) {
    constexpr int ratio = 8;
    for (const int height : {14, 30}) {
        QImage image(200 * ratio, height * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        GelBar bar;
        bar.paint(painter, QRectF(0, 0, 200, height), std::nullopt, 5);
        painter.end();
        for (const double down : {0.25, 0.5, 0.75}) {
            const int row = int(height * ratio * down);
            const double y = (row + 0.5) / ratio;
            // The stripe whose top corner is one period right of 60 points past the phase.
            const double corner = 5 - height + 18 * 6;
            const double expected = corner - y;
            const Found found = stripeOnRow(image, row, int((expected - 4) * ratio));
            EXPECT_NEAR(found.start / ratio, expected, 1.5 / ratio) << height << " " << down;
            EXPECT_NEAR(found.width / ratio, 9, 0.1) << height << " " << down;
        }
    }
}

TEST(GelBarTest, StripesReachBothEndsOfTheBar) {
    const GelBar bar;
    for (const double phase : {0.0, 7.0, 17.5}) {
        const std::vector<float> coverage = bar.stripeCoverage(200 + 14, 14, phase, 1);
        ASSERT_EQ(coverage.size(), 214U);
        // No gap is longer than the nine points between two stripes, at the ends as elsewhere.
        int gap = 0;
        for (const float covered : coverage) {
            gap = covered < 0.5 ? gap + 1 : 0;
            EXPECT_LE(gap, 9);
        }
    }
}

TEST(GelBarTest, HalfOfTheBarIsStripes) {
    const GelBar bar;
    for (const double ratio : {1.0, 1.5, 2.0}) {
        for (const double phase : {0.0, 0.3, 4.7}) {
            double sum = 0;
            const int diagonals = int(18 * 4 * ratio);
            for (const float covered : bar.stripeCoverage(diagonals, 14, phase, ratio))
                sum += covered;
            EXPECT_NEAR(sum / diagonals, 0.5, 1e-6) << ratio << " " << phase;
        }
    }
}

TEST(GelBarTest, AFractionOfAPointMovesTheSoftEdges) {
    const GelBar bar;
    const std::vector<float> whole = bar.stripeCoverage(60, 14, 0, 1);
    const std::vector<float> moved = bar.stripeCoverage(60, 14, 0.4, 1);
    EXPECT_NE(whole, moved);
    const std::vector<float> point = bar.stripeCoverage(60, 14, 1, 1);
    for (size_t i = 1; i < 60; ++i)
        EXPECT_FLOAT_EQ(point[i], whole[i - 1]);
}

TEST(GelBarTest, AStripeWidthOfAnotherCallerSetsThePeriod) {
    const GelBar bar(4);
    const std::vector<float> coverage = bar.stripeCoverage(64, 10, 0, 1);
    for (size_t i = 8; i < 64; ++i)
        EXPECT_FLOAT_EQ(coverage[i], coverage[i - 8]);
    EXPECT_NE(coverage[4], coverage[0]);
    EXPECT_DOUBLE_EQ(bar.phase(0.25), 4);
}

TEST(GelBarTest, ThePhaseMovesOnePeriodInHalfASecond) {
    const GelBar bar;
    EXPECT_DOUBLE_EQ(bar.phase(0), 0);
    EXPECT_DOUBLE_EQ(bar.phase(0.125), 4.5);
    EXPECT_DOUBLE_EQ(bar.phase(0.25), 9);
    EXPECT_NEAR(bar.phase(0.4999), 18, 0.01);
    EXPECT_NEAR(bar.phase(0.5), 0, 1e-9);
    EXPECT_NEAR(bar.phase(7200.125), 4.5, 1e-6);
    EXPECT_DOUBLE_EQ(bar.phase(-3), 0);
}

TEST(GelBarTest, TheTrackIsAGradientWithABorder) {
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        const QImage image = painted(0.0, 0, ratio);
        const int line = std::max(1, qRound(ratio));
        const int x = image.width() / 2;
        for (int y = 0; y < image.height(); ++y) {
            const bool border = y < line || y >= image.height() - line;
            const double t = (y + 0.5) / image.height();
            const Colour expected =
                border ? Colour::white(0.55) : Colour::white(0.78 + (0.92 - 0.78) * t);
            EXPECT_TRUE(isColour(image.pixel(x, y), expected)) << ratio << " row " << y;
        }
        EXPECT_LT(qAlpha(image.pixel(0, 0)), 20) << "round ends";
    }
}

TEST(GelBarTest, TheFillIsGradientStripesAndGlossInThisOrder) {
    for (const double ratio : {1.0, 2.0, 3.0}) {
        for (const double phase : {0.0, 4.5, 11.25}) {
            const QImage image = painted(std::nullopt, phase, ratio);
            int inside = 0;
            int outside = 0;
            for (int row = int(ratio); row < int(13 * ratio); ++row) {
                const double y = (row + 0.5) / ratio;
                const double gloss = std::max(0.0, 0.70 * (1 - y / 7));
                const Colour gel =
                    threeStops(Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom(), y / barHeight);
                for (int column = int(20 * ratio); column < int(180 * ratio); ++column) {
                    const double depth = depthInStripe((column + 0.5) / ratio, y, phase);
                    if (std::abs(depth) < 1.1 / ratio)
                        continue;  // the stripe's soft edge
                    ++(depth > 0 ? inside : outside);
                    const Colour expected = gel.under(Colour::white(1), depth > 0 ? 0.35 : 0)
                                                .under(Colour::white(1), gloss);
                    ASSERT_TRUE(isColour(image.pixel(column, row), expected, 1))
                        << column << " " << row << " at " << ratio << " phase " << phase;
                }
            }
            EXPECT_GT(inside, 500);
            EXPECT_GT(outside, 500);
        }
    }
}

TEST(GelBarTest, TheFillsGradientPassesItsThreeStops) {
    // Between stripes, at twenty pixels a point, so that rows are as good as points.
    const QImage image = painted(std::nullopt, 0, 20);
    const auto between = [&](double y) {
        for (int x = 40 * 20;; ++x) {
            if (depthInStripe((x + 0.5) / 20, y, 0) < -2)
                return image.pixel(x, int(y * 20));
        }
    };
    EXPECT_TRUE(isColour(between(7.0), Colour::of(Aqua::blueMid()), 1));
    EXPECT_TRUE(isColour(between(12.9), threeStops(Aqua::blueTop(), Aqua::blueMid(),
                                                   Aqua::blueBottom(), 12.925 / 14)));
    const Colour top = threeStops(Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom(), 1.025 / 14);
    EXPECT_TRUE(isColour(between(1.0), top.under(Colour::white(1), 0.70 * (1 - 1.025 / 7)), 1));
}

TEST(GelBarTest, TheFillHasABorderOfOnePoint) {
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        const QImage image = painted(std::nullopt, 0, ratio);
        const int line = std::max(1, qRound(ratio));
        const auto bodyAt = [&](int row) {
            const double t = (row + 0.5) / image.height();
            return threeStops(Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom(), t);
        };
        for (int i = 0; i < line; ++i) {
            const int row = image.height() - 1 - i;
            int found = 0;
            const Colour plain = bodyAt(row).under(Colour::of(Aqua::blueBottom()), 0.7);
            const Colour striped = bodyAt(row)
                                       .under(Colour::white(1), 0.35)
                                       .under(Colour::of(Aqua::blueBottom()), 0.7);
            for (int column = image.width() / 4; column < image.width() * 3 / 4; ++column) {
                const double depth = depthInStripe((column + 0.5) / ratio, (row + 0.5) / ratio, 0);
                if (std::abs(depth) < 1.1 / ratio)
                    continue;
                ++found;
                EXPECT_TRUE(isColour(image.pixel(column, row), depth > 0 ? striped : plain, 1));
            }
            EXPECT_GT(found, 20);
        }
    }
}

TEST(GelBarTest, StripesMoveToTheRight) {
    const QImage before = painted(std::nullopt, 0, 1);
    const QImage after = painted(std::nullopt, 5, 1);
    // Away from the ends the picture is the same, five points further.
    EXPECT_EQ(before.copy(30, 0, 100, 14), after.copy(35, 0, 100, 14));
    EXPECT_NE(before, after);
}

TEST(GelBarTest, TheJumpBackAtTheEndOfAPeriodIsInvisible) {
    EXPECT_EQ(painted(std::nullopt, 0, 2), painted(std::nullopt, 18, 2));
}

TEST(GelBarTest, TheFillEndsAsACapsuleOnTheTrack) {
    const QImage image = painted(0.5, 0, 2);
    // The fill's right end is at 100 points: full in the middle, away at the corner.
    EXPECT_TRUE(isBlue(image.pixel(198, 14)));
    EXPECT_FALSE(isBlue(image.pixel(198, 2)));
    EXPECT_FALSE(isBlue(image.pixel(202, 14)));
}

TEST(GelBarTest, AShortFillStaysInsideTheTracksRoundEnd) {
    const QImage track = painted(0.0, 0, 2);
    for (const double value : {0.005, 0.01, 0.03, 0.05}) {
        const QImage image = painted(value, 0, 2);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                // Two soft edges on top of each other cover at most a quarter more.
                EXPECT_LE(qAlpha(image.pixel(x, y)), qAlpha(track.pixel(x, y)) + 65) << value;
        EXPECT_TRUE(isBlue(image.pixel(1, 14))) << value;
    }
}

TEST(GelBarTest, FromRightToLeftTheFillBeginsOnTheRight) {
    const QImage image = painted(0.25, 0, 1, Qt::RightToLeft);
    EXPECT_TRUE(isBlue(image.pixel(195, 7)));
    EXPECT_TRUE(isBlue(image.pixel(152, 7)));
    EXPECT_FALSE(isBlue(image.pixel(147, 7)));
}

TEST(GelBarTest, ABarThatIsUsedAgainShowsEveryNewState) {
    GelBar bar;
    const auto paint = [&bar](std::optional<double> value, double phase, double ratio) {
        QImage image(int(barWidth * ratio), int(barHeight * ratio),
                     QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        bar.paint(painter, QRectF(0, 0, barWidth, barHeight), value, phase);
        return image;
    };
    for (const double ratio : {1.0, 2.0}) {
        for (const std::optional<double> value :
             {std::optional<double>(), std::optional(0.5), std::optional(0.0), std::optional(0.7)})
            EXPECT_EQ(paint(value, 3, ratio), painted(value, 3, ratio));
    }
}

TEST(GelBarTest, ABarThatBeginsWithinAPixelKeepsItsBordersInsideOfItsPixels) {
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
        for (int offset = 0; offset < 4; ++offset) {
            const QRectF rect(4 + offset, 4 + offset, 60 + offset, barHeight);
            QImage image(int(100 * ratio), int(40 * ratio), QImage::Format_ARGB32_Premultiplied);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::transparent);
            QPainter painter(&image);
            GelBar().paint(painter, rect, 0.0, 0);
            painter.end();
            const QRect pixels(
                QPoint(qRound(rect.left() * ratio), qRound(rect.top() * ratio)),
                QPoint(qRound(rect.right() * ratio) - 1, qRound(rect.bottom() * ratio) - 1));
            const QPoint middle = pixels.center();
            for (const int x : {pixels.left(), pixels.right()})
                EXPECT_NEAR(qRed(image.pixel(x, middle.y())), 0.55 * 255, 25)
                    << ratio << " " << offset;
            for (const int y : {pixels.top(), pixels.bottom()})
                EXPECT_TRUE(isColour(image.pixel(middle.x(), y), Colour::white(0.55)))
                    << ratio << " " << offset;
            for (const int x : {pixels.left() - 1, pixels.right() + 1})
                EXPECT_EQ(image.pixel(x, middle.y()), 0U) << ratio << " " << offset;
            for (const int y : {pixels.top() - 1, pixels.bottom() + 1})
                EXPECT_EQ(image.pixel(middle.x(), y), 0U) << ratio << " " << offset;
        }
    }
}

TEST(GelBarTest, ABarWithoutRoomPaintsNothing) {
    QImage image(10, 14, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    GelBar bar;
    bar.paint(painter, QRectF(0, 0, 0, 14), 0.5, 0);
    bar.paint(painter, QRectF(0, 0, 0, 14), std::nullopt, 0);
    painter.end();
    EXPECT_EQ(image.pixel(0, 7), 0U);
}

}  // namespace
