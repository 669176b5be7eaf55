#include "GelBar.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>
#include <algorithm>
#include <cmath>

#include "Aqua.h"
#include "ContinuousCapsule.h"
#include "Gel.h"
#include "ImageOperations.h"

namespace {

constexpr double periodSeconds = 0.5;
constexpr qreal trackTop = 0.78;
constexpr qreal trackBottom = 0.92;
constexpr qreal trackBorder = 0.55;
constexpr qreal stripeOpacity = 0.35;
constexpr qreal glossOpacity = 0.70;
constexpr qreal fillBorderOpacity = 0.70;

// The share of a pixel that lies beyond an edge of 45 degrees, which passes the pixel's middle at
// this distance (along a column or row, in pixels; negative when the middle is not beyond it).
qreal beyondEdge(qreal distance) {
    if (distance <= -1) {
        return 0;
    }
    if (distance >= 1) {
        return 1;
    }
    return distance < 0 ? (1 + distance) * (1 + distance) / 2
                        : 1 - (1 - distance) * (1 - distance) / 2;
}

}  // namespace

GelBar::GelBar(qreal stripeWidth) : m_stripeWidth(stripeWidth) {
    Q_ASSERT(stripeWidth > 0);
}

qreal GelBar::fillWidth(std::optional<double> value, qreal width) {
    if (!value) {
        return width;
    }
    const double v = *value;
    const double atLeastNothing = v >= 0 ? v : 0;
    // On v itself, so that what is not a number fails both comparisons and fills the bar.
    const double fraction = v < 1 ? atLeastNothing : 1;
    return width * fraction;
}

std::vector<float> GelBar::stripeCoverage(int diagonals, qreal height, qreal phase,
                                          qreal ratio) const {
    const qreal width = m_stripeWidth * ratio;
    const qreal period = 2 * width;
    // A stripe's left edge is where column and row add up to this; it repeats every period.
    const qreal first = (phase - height) * ratio;
    std::vector<float> result(static_cast<size_t>(diagonals));
    for (int i = 0; i < diagonals; ++i) {
        // From the edge to the middle of the pixels on this diagonal, along the columns.
        const qreal beyond = i + 1 - first;
        const qreal inPeriod = beyond - std::floor(beyond / period) * period;
        const qreal covered =
            beyondEdge(inPeriod) - beyondEdge(inPeriod - width) + beyondEdge(inPeriod - period);
        result[static_cast<size_t>(i)] = static_cast<float>(std::clamp<qreal>(covered, 0, 1));
    }
    return result;
}

qreal GelBar::phase(double seconds) const {
    return std::fmod(std::max(seconds, 0.0), periodSeconds) / periodSeconds * 2 * m_stripeWidth;
}

void GelBar::paint(QPainter& painter, const QRectF& rect, std::optional<double> value, qreal phase,
                   Qt::LayoutDirection direction) {
    // From one whole device pixel to another: a bar whose size alone was rounded would lose its far
    // border where it begins within a pixel.
    const QTransform toDevice = painter.deviceTransform();
    const auto snapped = [&](const QPointF& corner) {
        const QPointF device = toDevice.map(corner);
        return QPointF(std::round(device.x()), std::round(device.y()));
    };
    const QPointF extent = snapped(rect.bottomRight()) - snapped(rect.topLeft());
    Key key;
    key.ratio = painter.device()->devicePixelRatioF();
    key.size = QSizeF(extent.x(), extent.y()) / key.ratio;
    if (key.size.isEmpty()) {
        return;
    }
    const qreal width = fillWidth(value, key.size.width());
    key.fill = QRectF(direction == Qt::RightToLeft ? key.size.width() - width : 0, 0, width,
                      key.size.height());
    if (m_track.isNull() || !(key == m_key)) {
        drawLayers(key);
    }
    ImageOperations::drawAligned(painter, rect.topLeft(), m_track);
    if (key.fill.isEmpty()) {
        return;
    }

    m_frame = m_fill;
    drawStripes(m_frame, phase);
    QPainter fill(&m_frame);
    ImageOperations::drawAligned(fill, QPointF(0, 0), m_border);
    fill.end();
    ImageOperations::drawAligned(painter, rect.topLeft(), m_frame);
}

// White over what is there, which keeps its coverage: the stripes end where the capsule does. By
// hand, because Qt wakes its painting threads for each stripe, at ten times the cost.
void GelBar::drawStripes(QImage& fill, qreal phase) const {
    constexpr int one = 1 << 15;
    const int left = qRound(m_key.fill.left() * m_key.ratio);
    const int columns = std::min(qCeil(m_key.fill.width() * m_key.ratio), fill.width() - left);
    const std::vector<float> coverage =
        stripeCoverage(columns + fill.height(), m_key.size.height(), phase, m_key.ratio);
    std::vector<int> opacity;
    opacity.reserve(coverage.size());
    for (const float covered : coverage) {
        opacity.push_back(qRound(covered * stripeOpacity * one));
    }
    for (int y = 0; y < fill.height(); ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(fill.scanLine(y)) + left;
        const int* share = opacity.data() + y;
        for (int x = 0; x < columns; ++x) {
            const int alpha = qAlpha(line[x]);
            const auto lightened = [&](int value) {
                return value + (((alpha - value) * share[x] + one / 2) >> 15);
            };
            line[x] = qRgba(lightened(qRed(line[x])), lightened(qGreen(line[x])),
                            lightened(qBlue(line[x])), alpha);
        }
    }
}

void GelBar::drawLayers(const Key& key) {
    m_key = key;
    const qreal line = ImageOperations::linePixels(key.ratio) / key.ratio;
    const QRectF bar(QPointF(0, 0), key.size);
    // The fill's far end may lie between device pixels: a bar that grows slowly then glides.
    const QRectF part(key.fill.left(), 0, std::min(key.fill.right(), bar.right()) - key.fill.left(),
                      bar.height());

    m_track = ImageOperations::transparent(key.size, key.ratio);
    QPainter track(&m_track);
    track.setRenderHint(QPainter::Antialiasing);
    QLinearGradient groove(bar.topLeft(), bar.bottomLeft());
    groove.setColorAt(0, Gel::whiteLevel(trackTop));
    groove.setColorAt(1, Gel::whiteLevel(trackBottom));
    track.fillPath(continuousCapsule(bar), groove);
    Gel::strokeInside(track, bar, Gel::whiteLevel(trackBorder), line);
    track.end();

    m_fill = ImageOperations::transparent(key.size, key.ratio);
    m_border = m_fill;
    if (part.isEmpty()) {
        return;
    }
    QPainter fill(&m_fill);
    fill.setRenderHint(QPainter::Antialiasing);
    const QLinearGradient gel =
        Gel::body(bar, Aqua::blueTop(), Aqua::blueMid(), Aqua::blueBottom());
    fill.fillPath(continuousCapsule(part), gel);
    // Gloss and stripes are both white, so which of them is painted first makes no difference.
    fill.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    fill.fillRect(bar, Gel::gloss(bar, glossOpacity));
    fill.end();

    QPainter border(&m_border);
    border.setRenderHint(QPainter::Antialiasing);
    Gel::strokeInside(border, part, Gel::withOpacity(Aqua::blueBottom(), fillBorderOpacity), line);
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
