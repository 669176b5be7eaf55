#include "GelBar.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <cmath>

#include "Aqua.h"
#include "ContinuousCapsule.h"
#include "Gel.h"
#include "ImageOperations.h"

namespace {

constexpr double kPeriodSeconds = 0.5;
constexpr qreal kTrackTop = 0.78;
constexpr qreal kTrackBottom = 0.92;
constexpr qreal kTrackBorder = 0.55;
constexpr qreal kStripeOpacity = 0.35;
constexpr qreal kGlossOpacity = 0.70;
constexpr qreal kFillBorderOpacity = 0.70;

}  // namespace

GelBar::GelBar(qreal stripeWidth) : m_stripeWidth(stripeWidth) {
    Q_ASSERT(stripeWidth > 0);
}

qreal GelBar::fillWidth(std::optional<double> value, qreal width) {
    if (!value)
        return width;
    const double v = *value;
    const double atLeastNothing = v >= 0 ? v : 0;
    // On v itself, so that what is not a number fails both comparisons and fills the bar.
    const double fraction = v < 1 ? atLeastNothing : 1;
    return width * fraction;
}

std::vector<QPolygonF> GelBar::stripes(const QSizeF& size, qreal phase) const {
    std::vector<QPolygonF> result;
    const qreal height = size.height();
    for (int i = 0;; ++i) {
        const qreal x = phase - height + 2 * m_stripeWidth * i;
        if (!(x < size.width() + height))
            break;
        result.push_back(
            QPolygonF({QPointF(x, 0), QPointF(x + m_stripeWidth, 0),
                       QPointF(x + m_stripeWidth - height, height), QPointF(x - height, height)}));
    }
    return result;
}

qreal GelBar::phase(double seconds) const {
    return std::fmod(std::max(seconds, 0.0), kPeriodSeconds) / kPeriodSeconds * 2 * m_stripeWidth;
}

void GelBar::paint(QPainter& painter, const QRectF& rect, std::optional<double> value, qreal phase,
                   Qt::LayoutDirection direction) {
    Key key;
    key.size = rect.size();
    key.ratio = painter.device()->devicePixelRatioF();
    const qreal width = fillWidth(value, rect.width());
    key.fill =
        QRectF(direction == Qt::RightToLeft ? rect.width() - width : 0, 0, width, rect.height());
    if (m_track.isNull() || !(key == m_key))
        drawLayers(key);
    ImageOperations::drawAligned(painter, rect.topLeft(), m_track);
    if (key.fill.isEmpty())
        return;

    // Painting atop keeps the fill's own coverage, so the stripes end where the capsule does.
    m_frame = m_fill;
    QPainter fill(&m_frame);
    fill.setRenderHint(QPainter::Antialiasing);
    fill.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    fill.translate(key.fill.topLeft());
    fill.setPen(Qt::NoPen);
    fill.setBrush(Gel::withOpacity(Qt::white, kStripeOpacity));
    for (const QPolygonF& stripe : stripes(key.fill.size(), phase))
        fill.drawPolygon(stripe);
    fill.translate(-key.fill.topLeft());
    fill.setCompositionMode(QPainter::CompositionMode_SourceOver);
    fill.drawImage(QPointF(0, 0), m_border);
    fill.end();
    ImageOperations::drawAligned(painter, rect.topLeft(), m_frame);
}

void GelBar::drawLayers(const Key& key) {
    m_key = key;
    const qreal line = ImageOperations::linePixels(key.ratio) / key.ratio;
    const auto snapped = [&](qreal points) { return qRound(points * key.ratio) / key.ratio; };
    const QRectF bar(0, 0, snapped(key.size.width()), snapped(key.size.height()));
    // The fill's far end may lie between device pixels: a bar that grows slowly then glides.
    const QRectF part(key.fill.left(), 0, std::min(key.fill.right(), bar.right()) - key.fill.left(),
                      bar.height());

    m_track = ImageOperations::transparent(key.size, key.ratio);
    QPainter track(&m_track);
    track.setRenderHint(QPainter::Antialiasing);
    QLinearGradient groove(bar.topLeft(), bar.bottomLeft());
    groove.setColorAt(0, Gel::whiteLevel(kTrackTop));
    groove.setColorAt(1, Gel::whiteLevel(kTrackBottom));
    track.fillPath(continuousCapsule(bar), groove);
    Gel::strokeInside(track, bar, Gel::whiteLevel(kTrackBorder), line);
    track.end();

    m_fill = ImageOperations::transparent(key.size, key.ratio);
    m_border = m_fill;
    if (part.isEmpty())
        return;
    QPainter fill(&m_fill);
    fill.setRenderHint(QPainter::Antialiasing);
    const QLinearGradient gel =
        Gel::body(bar, Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom());
    fill.fillPath(continuousCapsule(part), gel);
    // Gloss and stripes are both white, so which of them is painted first makes no difference.
    fill.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    fill.fillRect(bar, Gel::gloss(bar, kGlossOpacity));
    fill.end();

    QPainter border(&m_border);
    border.setRenderHint(QPainter::Antialiasing);
    Gel::strokeInside(border, part, Gel::withOpacity(Aqua::blueBottom(), kFillBorderOpacity), line);
    border.end();

    // A fill that is shorter than the track's own round end must not stick out of it.
    if (part.width() < 2 * capsuleEndLength(bar.size())) {
        QImage inside = ImageOperations::transparent(key.size, key.ratio);
        QPainter mask(&inside);
        mask.setRenderHint(QPainter::Antialiasing);
        mask.fillPath(continuousCapsule(bar), Qt::black);
        mask.end();
        for (QImage* layer : {&m_fill, &m_border}) {
            QPainter cut(layer);
            cut.setCompositionMode(QPainter::CompositionMode_DestinationIn);
            cut.drawImage(QPointF(0, 0), inside);
        }
    }
}
