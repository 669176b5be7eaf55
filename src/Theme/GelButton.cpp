#include "GelButton.h"

#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>
#include <cmath>

#include "Aqua.h"
#include "ContinuousCapsule.h"
#include "Gel.h"
#include "ImageOperations.h"

namespace {

constexpr int fontPoints = 13;
constexpr qreal glossInset = 1;
constexpr qreal buttonGloss = 0.85;
constexpr qreal shadowOpacity = 0.18;
constexpr qreal shadowRadius = 1;
constexpr qreal shadowOffset = 1;
constexpr qreal pressedBrightness = -0.08;
constexpr qreal pressedScale = 0.98;
constexpr qreal disabledOpacity = 0.45;
constexpr qreal disabledSaturation = 0.3;
constexpr qreal focusWidth = 3;

QColor labelColour(Tint tint) {
    return tint == Tint::blue ? QColor(Qt::white) : Gel::whiteLevel(0.15);
}

QColor borderColour(Tint tint) {
    return tint == Tint::blue ? Gel::withOpacity(Aqua::blueBottom(), 0.8) : Gel::whiteLevel(0.6);
}

QLinearGradient body(Tint tint, const QRectF& rect) {
    return tint == Tint::blue
               ? Gel::body(rect, Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom())
               : Gel::body(rect, Aqua::grayTop(), Aqua::grayMid(), Aqua::grayBottom());
}

}  // namespace

QFont GelButton::labelFont() {
    return Aqua::font(fontPoints);
}

QImage GelButton::image(qreal ratio) const {
    const QSizeF whole = size.grownBy(margins());
    QImage face = ImageOperations::transparent(whole, ratio);

    QPainter painter(&face);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal scale = 1 - (1 - pressedScale) * pressed;
    const QPointF centre(whole.width() / 2, whole.height() / 2);
    painter.translate(centre);
    painter.scale(scale, scale);
    painter.translate(-centre);

    // The capsule's edges lie on device pixels, whatever the ratio.
    const auto snapped = [ratio](qreal points) { return qRound(points * ratio) / ratio; };
    const QRectF frame(QPointF(snapped(margins().left()), snapped(margins().top())),
                       QPointF(snapped(margins().left() + size.width()),
                               snapped(margins().top() + size.height())));
    painter.fillPath(continuousCapsule(frame), body(tint, frame));
    const QRectF glossFrame = frame.adjusted(glossInset, glossInset, -glossInset, -glossInset);
    painter.fillPath(continuousCapsule(glossFrame), Gel::gloss(glossFrame, buttonGloss));

    // On a whole device pixel, or the label would hop up and down while the button shrinks.
    const QFontMetricsF metrics(font);
    const QTransform toDevice = painter.deviceTransform();
    const qreal released = frame.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    QPointF baseline = toDevice.map(QPointF(0, snapped(released)));
    baseline.setY(std::round(baseline.y()));
    baseline = toDevice.inverted().map(baseline);
    QRectF line = frame;
    line.moveTop(baseline.y() - metrics.ascent());
    painter.setFont(font);
    painter.setPen(labelColour(tint));
    // What does not fit into the capsule is cut off with its own soft edge.
    painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    painter.drawText(
        line,
        static_cast<int>(Qt::AlignHCenter | Qt::AlignTop | Qt::TextSingleLine | Qt::TextDontClip |
                         (showMnemonic ? Qt::TextShowMnemonic : Qt::TextHideMnemonic)),
        text);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    Gel::strokeInside(painter, frame, borderColour(tint),
                      ImageOperations::linePixels(ratio) / ratio);
    painter.end();

    QImage result = ImageOperations::transparent(whole, ratio);
    QPainter composer(&result);
    composer.drawImage(QPointF(0, snapped(shadowOffset * scale)),
                       ImageOperations::blurredSilhouette(
                           face, shadowRadius * ratio, Gel::withOpacity(Qt::black, shadowOpacity)));
    composer.drawImage(QPointF(0, 0), face);
    if (focused) {
        composer.setRenderHint(QPainter::Antialiasing);
        const QRectF ring = frame.adjusted(-focusWidth, -focusWidth, focusWidth, focusWidth);
        Gel::strokeInside(composer, ring, Gel::withOpacity(Aqua::blueMid(), 0.75), focusWidth);
    }
    composer.end();

    if (pressed > 0) {
        ImageOperations::addBrightness(result, pressedBrightness * pressed);
    }
    if (!enabled) {
        ImageOperations::scaleSaturation(result, disabledSaturation);
        ImageOperations::scaleOpacity(result, disabledOpacity);
    }
    return result;
}
