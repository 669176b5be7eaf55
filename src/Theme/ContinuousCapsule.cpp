#include "ContinuousCapsule.h"

#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// An exponent above 2 makes the curvature nothing where an end meets the straight side. The ends
// are longer than a half circle to make up for the fuller shoulders, so they look neither boxy nor
// like the halves of an egg.
constexpr qreal exponent = 2.18;
constexpr qreal endLength = 1.2;  // times half the capsule's thickness
constexpr int pointsAQuarter = 24;

// A point of the first quarter of the unit superellipse, from (1, 0) to (0, 1).
QPointF unitPoint(int index) {
    const qreal angle = std::numbers::pi / 2 * index / pointsAQuarter;
    // Beyond the rounding of cosine and sine, the very ends must lie on the axes.
    const qreal x = index == pointsAQuarter ? 0 : std::cos(angle);
    const qreal y = std::sin(angle);
    return {std::pow(x, 2 / exponent), std::pow(y, 2 / exponent)};
}

}  // namespace

qreal capsuleEndLength(const QSizeF& size) {
    const qreal thickness = std::min(size.width(), size.height());
    const qreal length = std::max(size.width(), size.height());
    return std::min(thickness / 2 * endLength, length / 2);
}

QPainterPath continuousCapsule(const QRectF& rect) {
    QPainterPath path;
    if (!(rect.width() > 0 && rect.height() > 0)) {
        return path;
    }
    const bool lying = rect.width() >= rect.height();
    const qreal end = capsuleEndLength(rect.size());
    const qreal rx = lying ? end : rect.width() / 2;
    const qreal ry = lying ? rect.height() / 2 : end;

    // One quarter after the other, clockwise on the screen from the right end's middle.
    QPolygonF outline;
    outline.reserve(4L * (pointsAQuarter + 1));
    const auto add = [&](qreal centreX, qreal signX, qreal centreY, qreal signY, int index) {
        const QPointF point = unitPoint(index);
        outline << QPointF(centreX + signX * rx * point.x(), centreY + signY * ry * point.y());
    };
    const qreal left = rect.left() + rx;
    const qreal right = rect.right() - rx;
    const qreal top = rect.top() + ry;
    const qreal bottom = rect.bottom() - ry;
    for (int i = 0; i <= pointsAQuarter; ++i) {
        add(right, 1, bottom, 1, i);
    }
    for (int i = pointsAQuarter; i >= 0; --i) {
        add(left, -1, bottom, 1, i);
    }
    for (int i = 0; i <= pointsAQuarter; ++i) {
        add(left, -1, top, -1, i);
    }
    for (int i = pointsAQuarter; i >= 0; --i) {
        add(right, 1, top, -1, i);
    }
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}
