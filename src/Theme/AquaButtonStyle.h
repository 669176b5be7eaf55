// Draws push buttons as glossy capsules.
//
// aquaButton() gives a button this style and takes it away again; nobody else needs to make one.
// Belongs to the button; main thread.
#pragma once

#include <QFont>
#include <QHash>
#include <QImage>
#include <QProxyStyle>

#include "GelButton.h"

class QPushButton;
class QVariantAnimation;

class AquaButtonStyle final : public QProxyStyle {
    Q_OBJECT

public:
    explicit AquaButtonStyle(Tint tint);

    Tint tint() const { return m_tint; }

    // How far `button` is pressed in what it shows: 0 to 1.
    qreal pressedAmount() const;
    // Moves the amount to 0 or 1 in a tenth of a second, easing out.
    QVariantAnimation& pressing() const { return *m_pressing; }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
    // Layouts place the capsule; the shadow and the focus ring lie outside of that.
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;

private:
    void showPressed(bool pressed, const QWidget* widget) const;

    const Tint m_tint;
    QVariantAnimation* m_pressing;
    mutable bool m_shownPressed = false;
    // What was painted last, so that repainting what lies behind costs no drawing.
    mutable GelButton m_drawn;
    mutable QImage m_image;
};

// With `enabled`, `button` is a gel button of that tint from now on; without, the platform's
// standard button, exactly as it was. May be called again at any time.
void aquaButton(QPushButton* button, bool enabled, Tint tint);
