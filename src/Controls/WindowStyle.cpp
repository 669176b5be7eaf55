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

// Fusion draws the edges of fields darker than the window, which is invisible in the dark.
void drawEdge(const QStyleOption& option, QPainter& painter) {
    if (Appearance::schemeOf(option.palette) != SystemAppearance::Scheme::Dark) {
        return;
    }
    QColor edge = Appearance::color(Appearance::Role::Gray, SystemAppearance::Scheme::Dark);
    edge.setAlphaF(option.state.testFlag(QStyle::State_Enabled) ? 0.8F : 0.4F);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    painter.restore();
}

}  // namespace

WindowStyle::WindowStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void WindowStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool field =
        element == PE_IndicatorCheckBox || (element == PE_FrameLineEdit && option != nullptr &&
                                            !option->state.testFlag(State_HasFocus));
    if (field && option != nullptr) {
        drawEdge(*option, *painter);
    }
}

void WindowStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    QProxyStyle::drawControl(element, option, painter, widget);
    if (option == nullptr) {
        return;
    }
    if (element == CE_PushButton) {
        drawFocusRing(*option, *painter);
    } else if (element == CE_ProgressBarGroove) {
        drawEdge(*option, *painter);
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

#include "moc_WindowStyle.cpp"
