#include "Divider.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

Divider::Divider(QWidget* parent) : QWidget(parent) {
    setFixedHeight(1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Divider::paintEvent(QPaintEvent*) {
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(0.14F);
    QPainter painter(this);
    // Whole device pixels, as many wherever the line stands: a widget of one point covers sometimes
    // one and sometimes two of them on screens with fractions of a pixel a point.
    const QTransform toDevice = painter.deviceTransform();
    const QPointF corner = toDevice.map(QPointF(0, 0));
    const qreal line = std::max(1.0, std::floor(toDevice.m22()));
    const QRectF pixels(corner.x(), std::round(corner.y()), width() * toDevice.m11(), line);
    painter.fillRect(toDevice.inverted().mapRect(pixels), color);
}

#include "moc_Divider.cpp"
