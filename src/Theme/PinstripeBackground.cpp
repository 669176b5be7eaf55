#include "PinstripeBackground.h"

#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <cmath>

#include "ImageOperations.h"

namespace {

constexpr qreal period = 4;
constexpr qreal lineHeight = 1;
constexpr QColor base(237, 240, 245);
constexpr QColor stripeColor(255, 255, 255, 153);  // 60 %

}  // namespace

PinstripeBackground::PinstripeBackground(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    if (parent != nullptr) {
        parent->installEventFilter(this);
        fillParent();
    }
}

QList<QRectF> PinstripeBackground::stripes(const QSizeF& size) {
    QList<QRectF> result;
    if (!(size.height() > 0)) {
        return result;
    }
    for (int i = 0; i * period < size.height(); ++i) {
        result.append(QRectF(0, i * period, size.width(), lineHeight));
    }
    return result;
}

void PinstripeBackground::paint(QPainter& painter, const QRectF& rect) {
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.fillRect(rect, base);

    // Device pixels from here on: what is painted covers whole ones.
    const QTransform toDevice = painter.deviceTransform();
    const QTransform toPoints = toDevice.inverted();
    const qreal ratio = toDevice.m22();
    const int line = ImageOperations::linePixels(ratio);
    const qreal bottom = toDevice.map(rect.bottomLeft()).y();
    const QRectF clip = painter.hasClipping() ? painter.clipBoundingRect().intersected(rect) : rect;
    QList<QRectF> visible;
    for (const QRectF& stripe : stripes(rect.size())) {
        const QRectF points = stripe.translated(rect.topLeft());
        if (points.bottom() < clip.top() || points.top() > clip.bottom()) {
            continue;
        }
        const QPointF corner = toDevice.map(points.topLeft());
        const qreal top = std::round(corner.y());
        const qreal height = std::min<qreal>(line, std::max<qreal>(bottom - top, 0));
        const QRectF pixels(corner.x(), top, toDevice.map(points.topRight()).x() - corner.x(),
                            height);
        visible.append(toPoints.mapRect(pixels));
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(stripeColor);
    painter.drawRects(visible);
    painter.restore();
}

bool PinstripeBackground::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parent() &&
        (event->type() == QEvent::Resize || event->type() == QEvent::ChildAdded)) {
        fillParent();
    }
    return QWidget::eventFilter(watched, event);
}

void PinstripeBackground::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setClipRegion(event->region());
    paint(painter, QRectF(rect()));
}

void PinstripeBackground::fillParent() {
    setGeometry(parentWidget()->rect());
    lower();
}

#include "moc_PinstripeBackground.cpp"
