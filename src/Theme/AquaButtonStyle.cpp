#include "AquaButtonStyle.h"

#include <QEasingCurve>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QVariantAnimation>

#include "FrameClock.h"
#include "ImageOperations.h"

namespace {

constexpr int kPressMilliseconds = 100;

QEasingCurve easeOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(QPointF(0, 0), QPointF(0.58, 1), QPointF(1, 1));
    return curve;
}

// What the button looked like before, to be put back.
class GelState final : public QObject {
public:
    explicit GelState(QPushButton* button)
        : QObject(button),
          m_font(button->font()),
          m_hadFont(button->testAttribute(Qt::WA_SetFont)) {}

    static GelState* of(QPushButton* button) {
        for (QObject* child : button->children()) {
            if (auto* state = dynamic_cast<GelState*>(child))
                return state;
        }
        return nullptr;
    }

    void apply(QPushButton* button, Tint tint) {
        if (m_style && m_style->tint() == tint)
            return;
        // The old style must outlive its use by the button.
        const std::unique_ptr<AquaButtonStyle> old = std::move(m_style);
        m_style = std::make_unique<AquaButtonStyle>(tint);
        button->setFont(GelButton::labelFont());
        button->setStyle(m_style.get());
        QObject::connect(&m_style->pressing(), &QVariantAnimation::valueChanged, button,
                         qOverload<>(&QWidget::update));
    }

    void restore(QPushButton* button) {
        button->setStyle(nullptr);
        button->setFont(m_hadFont ? m_font : QFont());
    }

private:
    const QFont m_font;
    const bool m_hadFont;
    std::unique_ptr<AquaButtonStyle> m_style;
};

}  // namespace

AquaButtonStyle::AquaButtonStyle(Tint tint)
    : m_tint(tint), m_pressing(new QVariantAnimation(this)) {
    m_pressing->setDuration(kPressMilliseconds);
    m_pressing->setEasingCurve(easeOut());
    m_pressing->setStartValue(0.0);
    m_pressing->setEndValue(0.0);
}

qreal AquaButtonStyle::pressedAmount() const {
    const QVariant value = m_pressing->currentValue();
    return value.isValid() ? value.toReal() : 0;
}

void AquaButtonStyle::showPressed(bool pressed, const QWidget* widget) const {
    if (pressed == m_shownPressed)
        return;
    m_shownPressed = pressed;
    const qreal target = pressed ? 1 : 0;
    const bool still = FrameClock::isMotionReduced() || widget == nullptr || !widget->isVisible();
    const qreal from = still ? target : pressedAmount();
    m_pressing->stop();
    m_pressing->setStartValue(from);
    m_pressing->setEndValue(target);
    if (still) {
        m_pressing->setCurrentTime(kPressMilliseconds);
    } else {
        m_pressing->start();
    }
}

void AquaButtonStyle::drawControl(ControlElement element, const QStyleOption* option,
                                  QPainter* painter, const QWidget* widget) const {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (element != CE_PushButton || button == nullptr) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    const bool enabled = button->state & State_Enabled;
    showPressed(enabled && (button->state & (State_Sunken | State_On)), widget);

    GelButton look;
    look.tint = m_tint;
    look.text = button->text;
    look.font = painter->font();
    look.size = QSizeF(button->rect.size()).shrunkBy(GelButton::margins());
    look.pressed = pressedAmount();
    look.enabled = enabled;
    look.focused = (button->state & State_HasFocus) && (button->state & State_KeyboardFocusChange);
    look.showMnemonic = styleHint(SH_UnderlineShortcut, option, widget) != 0;

    const qreal ratio = painter->device()->devicePixelRatioF();
    if (m_image.isNull() || m_image.devicePixelRatio() != ratio || !(look == m_drawn)) {
        m_image = look.image(ratio);
        m_drawn = look;
    }
    ImageOperations::drawAligned(*painter, button->rect.topLeft(), m_image);
}

QSize AquaButtonStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                        const QSize& contents, const QWidget* widget) const {
    if (type != CT_PushButton)
        return QProxyStyle::sizeFromContents(type, option, contents, widget);
    return contents.grownBy(GelButton::padding()).grownBy(GelButton::margins());
}

QRect AquaButtonStyle::subElementRect(SubElement element, const QStyleOption* option,
                                      const QWidget* widget) const {
    if (element == SE_PushButtonLayoutItem && option != nullptr)
        return option->rect.marginsRemoved(GelButton::margins());
    return QProxyStyle::subElementRect(element, option, widget);
}

void aquaButton(QPushButton* button, bool enabled, Tint tint) {
    GelState* state = GelState::of(button);
    if (enabled) {
        if (state == nullptr)
            state = new GelState(button);
        state->apply(button, tint);
    } else if (state != nullptr) {
        state->restore(button);
        delete state;
    }
}
