#include "AquaButtonStyle.h"

#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QStyleOption>
#include <memory>

#include "GelButtonState.h"
#include "ImageOperations.h"
#include "Surround.h"

namespace {

// Of the capsule in the button's image.
QPoint imageOffset() {
    return {GelButton::margins().left(), GelButton::margins().top()};
}

// The part of the button's image that lies outside of the button.
class GelSurround final : public Surround {
public:
    GelSurround(QPushButton* button, GelButtonState* state)
        : Surround(button, Layer::Shadow), m_button(button), m_state(state) {
        connect(state, &GelButtonState::changed, this, qOverload<>(&QWidget::update));
        place();
    }

protected:
    QRect extent(const QRect& frame) const override {
        return frame.marginsAdded(GelButton::margins());
    }

    void paintEvent(QPaintEvent* /*event*/) override {
        if (!m_button || !m_state) {
            return;
        }
        QPainter painter(this);
        painter.setClipRegion(QRegion(rect()) - QRegion(frame()));
        ImageOperations::drawAligned(painter, frame().topLeft() - imageOffset(),
                                     m_state->image(*m_button, devicePixelRatioF()));
    }

private:
    QPointer<QPushButton> m_button;
    QPointer<GelButtonState> m_state;
};

// What makes a button a gel button, and what it was before.
class GelLook final : public QObject {
public:
    explicit GelLook(QPushButton* button)
        : QObject(button),
          m_font(button->font()),
          m_hadFont(button->testAttribute(Qt::WA_SetFont)) {}
    ~GelLook() override { delete m_surround; }

    static GelLook* of(const QPushButton* button) {
        for (QObject* child : button->children()) {
            if (auto* look = dynamic_cast<GelLook*>(child)) {
                return look;
            }
        }
        return nullptr;
    }

    void apply(QPushButton* button, Tint tint) {
        if (m_style && m_style->state().tint() == tint) {
            return;
        }
        // The old style must outlive its use by the button.
        const std::unique_ptr<AquaButtonStyle> old = std::move(m_style);
        m_style = std::make_unique<AquaButtonStyle>(tint);
        button->setFont(GelButton::labelFont());
        button->setStyle(m_style.get());
        QObject::connect(&m_style->state(), &GelButtonState::changed, button,
                         qOverload<>(&QWidget::update));
        delete m_surround;
        m_surround = new GelSurround(button, &m_style->state());
    }

    void restore(QPushButton* button) {
        button->setStyle(nullptr);
        button->setFont(m_hadFont ? m_font : QFont());
    }

private:
    const QFont m_font;
    const bool m_hadFont;
    std::unique_ptr<AquaButtonStyle> m_style;
    QPointer<GelSurround> m_surround;
};

}  // namespace

AquaButtonStyle::AquaButtonStyle(Tint tint) : m_state(new GelButtonState(tint, this)) {}

void AquaButtonStyle::drawControl(ControlElement element, const QStyleOption* option,
                                  QPainter* painter, const QWidget* widget) const {
    const auto* button = qobject_cast<const QPushButton*>(widget);
    if (element != CE_PushButton || button == nullptr) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    const qreal ratio = painter->device()->devicePixelRatioF();
    ImageOperations::drawAligned(*painter, option->rect.topLeft() - imageOffset(),
                                 m_state->image(*button, ratio));
}

QSize AquaButtonStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                        const QSize& contents, const QWidget* widget) const {
    if (type != CT_PushButton) {
        return QProxyStyle::sizeFromContents(type, option, contents, widget);
    }
    return contents.grownBy(GelButton::padding());
}

void aquaButton(QPushButton* button, bool enabled, Tint tint) {
    GelLook* look = GelLook::of(button);
    if (enabled) {
        if (look == nullptr) {
            look = new GelLook(button);
        }
        look->apply(button, tint);
    } else if (look != nullptr) {
        look->restore(button);
        delete look;
    }
}

#include "moc_AquaButtonStyle.cpp"
