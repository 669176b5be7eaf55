// Draws push buttons as glossy capsules.
//
// The button is as large as its capsule. What lies around that, a shadow and the keyboard's focus
// ring, is left to a widget behind it. aquaButton() makes both and takes them away again; nobody
// else needs to. Belongs to the button; main thread.
#pragma once

#include <QProxyStyle>

#include "GelButton.h"

class GelButtonState;
class QPushButton;

class AquaButtonStyle final : public QProxyStyle {
    Q_OBJECT

public:
    explicit AquaButtonStyle(Tint tint);

    GelButtonState& state() const { return *m_state; }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;

private:
    GelButtonState* m_state;
};

// With `enabled`, `button` is a gel button of that tint from now on; without, the platform's
// standard button, exactly as it was. May be called again at any time.
void aquaButton(QPushButton* button, bool enabled, Tint tint);
