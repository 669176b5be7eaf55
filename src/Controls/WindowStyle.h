// The widget style of the standard look: Fusion, with more room beside the texts of buttons, with
// fields that have an edge in the dark too, and with a keyboard focus that nobody can take for the
// mark of the default button.
//
// Belongs to the application; main thread.
#pragma once

#include <QProxyStyle>

class WindowStyle final : public QProxyStyle {
    Q_OBJECT

public:
    WindowStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
};
