#include "WindowStyle.h"

#include <QPainter>
#include <QStyleOption>

#include "Appearance.h"

namespace {

void drawFocusRing(const QStyleOption& option, QPainter& painter) {
    const auto wanted = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
    if ((option.state & wanted) != wanted) {
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Appearance::color(Appearance::Role::Accent, option.palette), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), 3, 3);
    painter.restore();
}

}  // namespace

WindowStyle::WindowStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void WindowStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    QProxyStyle::drawControl(element, option, painter, widget);
    if (element == CE_PushButton && option != nullptr) {
        drawFocusRing(*option, *painter);
    }
}

void WindowStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                     QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ToolButton && option != nullptr) {
        drawFocusRing(*option, *painter);
    }
}

QSize WindowStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                    const QSize& contents, const QWidget* widget) const {
    const QSize usual = QProxyStyle::sizeFromContents(type, option, contents, widget);
    return type == CT_PushButton ? usual.grownBy(QMargins(6, 2, 6, 2)) : usual;
}
