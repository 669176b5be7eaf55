#include "GelButtonState.h"

#include <QEasingCurve>
#include <QPushButton>
#include <QStyle>
#include <QStyleOption>
#include <QVariantAnimation>

#include "FrameClock.h"

namespace {

constexpr int pressMilliseconds = 100;

QEasingCurve easeOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(QPointF(0, 0), QPointF(0.58, 1), QPointF(1, 1));
    return curve;
}

}  // namespace

GelButtonState::GelButtonState(Tint tint, QObject* parent)
    : QObject(parent), m_pressing(new QVariantAnimation(this)) {
    m_look.tint = tint;
    m_pressing->setDuration(pressMilliseconds);
    m_pressing->setEasingCurve(easeOut());
    m_pressing->setStartValue(0.0);
    m_pressing->setEndValue(0.0);
    connect(m_pressing, &QVariantAnimation::valueChanged, this, &GelButtonState::changed);
}

const QImage& GelButtonState::image(const QPushButton& button, qreal ratio) {
    showPressed(button.isEnabled() && (button.isDown() || button.isChecked()), button.isVisible());
    QStyleOption option;
    option.initFrom(&button);
    GelButton look;
    look.tint = tint();
    look.text = button.text();
    look.font = button.font();
    look.size = button.size();
    look.pressed = pressedAmount();
    look.enabled = button.isEnabled();
    look.focused = (option.state & QStyle::State_HasFocus) &&
                   (option.state & QStyle::State_KeyboardFocusChange);
    look.showMnemonic =
        button.style()->styleHint(QStyle::SH_UnderlineShortcut, &option, &button) != 0;
    if (m_image.isNull() || m_image.devicePixelRatio() != ratio || !(look == m_look)) {
        m_image = look.image(ratio);
        m_look = look;
        emit changed();
    }
    return m_image;
}

qreal GelButtonState::pressedAmount() const {
    const QVariant value = m_pressing->currentValue();
    return value.isValid() ? value.toReal() : 0;
}

void GelButtonState::showPressed(bool pressed, bool visible) {
    if (pressed == m_shownPressed) {
        return;
    }
    m_shownPressed = pressed;
    const qreal target = pressed ? 1 : 0;
    const bool still = FrameClock::isMotionReduced() || !visible;
    const qreal from = still ? target : pressedAmount();
    m_pressing->stop();
    m_pressing->setStartValue(from);
    m_pressing->setEndValue(target);
    if (still) {
        m_pressing->setCurrentTime(pressMilliseconds);
    } else {
        m_pressing->start();
    }
}

#include "moc_GelButtonState.cpp"
