// How one gel button on the screen looks at this moment.
//
// Follows the button's own state, animates its being pressed, and keeps what was painted last, so
// that repainting what lies around or behind the button costs no drawing. Owned by the button's
// style; main thread.
#pragma once

#include <QImage>
#include <QObject>

#include "GelButton.h"

class QPushButton;
class QVariantAnimation;

class GelButtonState final : public QObject {
    Q_OBJECT

public:
    explicit GelButtonState(Tint tint, QObject* parent = nullptr);

    Tint tint() const { return m_look.tint; }

    // The button as it looks now: the capsule with GelButton::margins() around it, for a screen of
    // `ratio` device pixels a point. Begins to animate when the button was pressed or released.
    const QImage& image(const QPushButton& button, qreal ratio);

    // How far the button is pressed in what it shows: 0 to 1.
    qreal pressedAmount() const;
    // Moves that to 0 or 1 in a tenth of a second, easing out.
    QVariantAnimation& pressing() { return *m_pressing; }

signals:
    // image() would be, or has become, another one.
    void changed();

private:
    void showPressed(bool pressed, bool visible);

    GelButton m_look;
    QImage m_image;
    QVariantAnimation* m_pressing;
    bool m_shownPressed = false;
};
