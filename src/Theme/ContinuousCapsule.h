// The shape of everything glossy: a capsule whose ends are superellipses.
#pragma once

#include <QPainterPath>
#include <QRectF>

// A capsule that fills `rect`, lying or standing as the rectangle does. Its ends swell into the
// straight sides without the jump in curvature that a circular arc has. Empty for an empty rect.
QPainterPath continuousCapsule(const QRectF& rect);

// How far an end of a capsule of this size reaches along its longer side.
qreal capsuleEndLength(const QSizeF& size);
