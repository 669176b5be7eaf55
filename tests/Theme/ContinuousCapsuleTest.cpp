#include "ContinuousCapsule.h"

#include <gtest/gtest.h>

#include <QPolygonF>
#include <cmath>

namespace {

// The capsule's upper edge at this x: the least y on the outline, by the outline's own segments.
double upperEdge(const QPainterPath& path, double x) {
    double least = 1e9;
    const QPolygonF outline = path.toFillPolygon();
    for (int i = 1; i < outline.size(); ++i) {
        const QPointF a = outline[i - 1];
        const QPointF b = outline[i];
        if (std::min(a.x(), b.x()) > x || std::max(a.x(), b.x()) < x || a.x() == b.x())
            continue;
        least = std::min(least, a.y() + (b.y() - a.y()) * (x - a.x()) / (b.x() - a.x()));
    }
    return least;
}

double area(const QPainterPath& path) {
    const QPolygonF outline = path.toFillPolygon();
    double twice = 0;
    for (int i = 1; i < outline.size(); ++i)
        twice += outline[i - 1].x() * outline[i].y() - outline[i].x() * outline[i - 1].y();
    return std::abs(twice) / 2;
}

TEST(ContinuousCapsuleTest, FillsItsRectangleExactly) {
    for (const QRectF& rect : {QRectF(3, 5, 120, 26), QRectF(0, 0, 14, 14), QRectF(1, 1, 5, 14)}) {
        const QRectF bounds = continuousCapsule(rect).boundingRect();
        EXPECT_NEAR(bounds.left(), rect.left(), 1e-9);
        EXPECT_NEAR(bounds.top(), rect.top(), 1e-9);
        EXPECT_NEAR(bounds.right(), rect.right(), 1e-9);
        EXPECT_NEAR(bounds.bottom(), rect.bottom(), 1e-9);
    }
}

TEST(ContinuousCapsuleTest, IsEmptyForAnEmptyRectangle) {
    EXPECT_TRUE(continuousCapsule(QRectF(0, 0, 0, 14)).isEmpty());
    EXPECT_TRUE(continuousCapsule(QRectF(0, 0, 14, 0)).isEmpty());
    EXPECT_TRUE(continuousCapsule(QRectF(0, 0, -3, 14)).isEmpty());
    EXPECT_TRUE(continuousCapsule(QRectF(0, 0, std::nan(""), 14)).isEmpty());
}

TEST(ContinuousCapsuleTest, HasStraightSidesBetweenItsEnds) {
    const QPainterPath path = continuousCapsule(QRectF(0, 0, 120, 20));
    const double end = capsuleEndLength(QSizeF(120, 20));
    for (double x = end; x <= 120 - end; x += 5)
        EXPECT_NEAR(upperEdge(path, x), 0, 1e-9);
}

TEST(ContinuousCapsuleTest, LeavesTheStraightSideMoreGentlyThanACircle) {
    // Both measured from where they begin to bend, over a part of the end's length.
    const QPainterPath path = continuousCapsule(QRectF(0, 0, 120, 20));
    const double end = capsuleEndLength(QSizeF(120, 20));
    for (const double share : {0.1, 0.2, 0.3}) {
        const double circle = 10 - std::sqrt(100 - std::pow(share * 10, 2));
        EXPECT_LT(upperEdge(path, end - share * end), circle) << share;
        EXPECT_GT(upperEdge(path, end - share * end), 0) << share;
    }
}

TEST(ContinuousCapsuleTest, IsNeitherACircularCapsuleNorABox) {
    const double circular = 100 * 20 + std::numbers::pi * 100;
    const double measured = area(continuousCapsule(QRectF(0, 0, 120, 20)));
    const double box = 120 * 20;
    EXPECT_GT(std::abs(measured - circular), 1);
    // Of the four corners' 86 square points that a circular capsule leaves free, most stay free.
    EXPECT_GT(box - measured, 0.8 * (box - circular));
}

TEST(ContinuousCapsuleTest, IsTheSameFromAllFourSides) {
    const QRectF rect(0, 0, 60, 26);
    const QPainterPath path = continuousCapsule(rect);
    for (double x = 0.25; x < 30; x += 0.5) {
        for (double y = 0.25; y < 13; y += 0.5) {
            const bool inside = path.contains(QPointF(x, y));
            EXPECT_EQ(path.contains(QPointF(60 - x, y)), inside) << x << " " << y;
            EXPECT_EQ(path.contains(QPointF(x, 26 - y)), inside) << x << " " << y;
            EXPECT_EQ(path.contains(QPointF(60 - x, 26 - y)), inside) << x << " " << y;
        }
    }
}

TEST(ContinuousCapsuleTest, StandsUprightInANarrowRectangle) {
    const QPainterPath lying = continuousCapsule(QRectF(0, 0, 40, 10));
    const QPainterPath standing = continuousCapsule(QRectF(0, 0, 10, 40));
    for (double x = 0.25; x < 40; x += 0.5)
        for (double y = 0.25; y < 10; y += 0.5)
            EXPECT_EQ(lying.contains(QPointF(x, y)), standing.contains(QPointF(y, x)));
}

}  // namespace
