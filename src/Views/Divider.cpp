#include "Divider.h"

#include <QPainter>

Divider::Divider(QWidget* parent) : QWidget(parent) {
    setFixedHeight(1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Divider::paintEvent(QPaintEvent*) {
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(0.14F);
    QPainter(this).fillRect(rect(), color);
}
