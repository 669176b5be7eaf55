// What gel buttons and the gel progress bar are painted with.
//
// Pure functions; any thread.
#pragma once

#include <QColor>
#include <QLinearGradient>
#include <QRectF>

class QPainter;

namespace Gel {

// A grey of this level, 0 (black) to 1 (white).
QColor whiteLevel(qreal level);
QColor withOpacity(QColor colour, qreal opacity);

// From the top of `rect` through the middle to its bottom.
QLinearGradient body(const QRectF& rect, const QColor& top, const QColor& middle,
                     const QColor& bottom);

// The light on the upper half: white of `opacity` at the top of `rect`, nothing at its centre.
QLinearGradient gloss(const QRectF& rect, qreal opacity);

// A line `width` wide along the inside of the edge of the capsule that fills `rect`.
void strokeInside(QPainter& painter, const QRectF& rect, const QColor& colour, qreal width);

}  // namespace Gel
