#include "Gel.h"

#include <QPainter>
#include <QPen>
#include <algorithm>

#include "ContinuousCapsule.h"

QColor Gel::whiteLevel(qreal level) {
    const int step = qRound(level * 255);
    return {step, step, step};
}

QColor Gel::withOpacity(QColor colour, qreal opacity) {
    colour.setAlphaF(static_cast<float>(opacity));
    return colour;
}

QLinearGradient Gel::body(const QRectF& rect, const QColor& top, const QColor& middle,
                          const QColor& bottom) {
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    gradient.setColorAt(0, top);
    gradient.setColorAt(0.5, middle);
    gradient.setColorAt(1, bottom);
    return gradient;
}

QLinearGradient Gel::gloss(const QRectF& rect, qreal opacity) {
    QLinearGradient gradient(rect.topLeft(), QPointF(rect.left(), rect.center().y()));
    gradient.setColorAt(0, withOpacity(Qt::white, opacity));
    gradient.setColorAt(1, withOpacity(Qt::white, 0));
    return gradient;
}

void Gel::strokeInside(QPainter& painter, const QRectF& rect, const QColor& colour, qreal width) {
    // What is thinner than its border is all border.
    const qreal line = std::min({width, rect.width() / 2, rect.height() / 2});
    QPen pen(colour, line);
    pen.setJoinStyle(Qt::MiterJoin);
    pen.setMiterLimit(10);
    const qreal half = line / 2;
    painter.strokePath(continuousCapsule(rect.adjusted(half, half, -half, -half)), pen);
}
