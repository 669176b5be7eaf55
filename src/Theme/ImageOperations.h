// Adjustments of images that QPainter lacks, and the placing of images on whole device pixels.
//
// Pure functions; any thread. All images are Format_ARGB32_Premultiplied and keep their device
// pixel ratio.
#pragma once

#include <QColor>
#include <QImage>
#include <QRectF>

class QPainter;

namespace ImageOperations {

// A transparent image of `size` points for a screen of `ratio` device pixels a point.
QImage transparent(const QSizeF& size, qreal ratio);

// What the image covers, blurred by a Gaussian of the given standard deviation in device pixels and
// painted in `colour`. What is blurred beyond the image's edges is lost. A sigma of nothing only
// paints in the colour.
QImage blurredSilhouette(const QImage& image, qreal sigma, const QColor& colour);

// Adds `amount` (-1 to 1 of full intensity) to red, green and blue.
void addBrightness(QImage& image, qreal amount);

// 1 leaves the colours, 0 makes them grey of the same luminance.
void scaleSaturation(QImage& image, qreal factor);

// 1 leaves the image, 0 makes it invisible.
void scaleOpacity(QImage& image, qreal factor);

// A line of one point in whole device pixels: at least one, and the same everywhere.
int linePixels(qreal ratio);

// Draws an image made for the painter's device with its corner at `corner` (points), moved by less
// than half a device pixel so that its pixels are the device's own.
void drawAligned(QPainter& painter, const QPointF& corner, const QImage& image);

// Draws an image made for the painter's device, enlarged smoothly by `scale` around its middle,
// with that at `centre` (points).
void drawScaled(QPainter& painter, const QPointF& centre, const QImage& image, qreal scale);

}  // namespace ImageOperations
