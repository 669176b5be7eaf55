#include "AquaPulse.h"

#include <QEasingCurve>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>
#include <algorithm>
#include <cmath>

#include "Aqua.h"
#include "ContinuousCapsule.h"
#include "FrameClock.h"
#include "ImageOperations.h"

namespace {

constexpr double oneWaySeconds = 0.9;
constexpr qreal blurRadius = 6;
constexpr qreal glowReach = 3 * blurRadius;
constexpr qreal seenReach = 2 * blurRadius;
constexpr qreal dimOpacity = 0.35;
constexpr qreal brightOpacity = 0.9;
constexpr qreal brightScale = 1.08;

const QEasingCurve& easeInOut() {
    static const QEasingCurve curve = [] {
        QEasingCurve bezier(QEasingCurve::BezierSpline);
        bezier.addCubicBezierSegment(QPointF(0.42, 0), QPointF(0.58, 1), QPointF(1, 1));
        return bezier;
    }();
    return curve;
}

// What a frame and its glow of this reach take at their largest.
QRect withGlow(const QRect& frame, qreal reach) {
    const QPointF centre = QRectF(frame).center();
    const QSizeF size = (QSizeF(frame.size()) + QSizeF(2 * reach, 2 * reach)) * brightScale;
    return QRectF(centre - QPointF(size.width() / 2, size.height() / 2), size).toAlignedRect();
}

// Ends the glow together with its view, and is how the glow of a view is found.
class PulseHolder final : public QObject {
public:
    explicit PulseHolder(QWidget* view) : QObject(view), m_pulse(new AquaPulse(view)) {}
    ~PulseHolder() override { delete m_pulse; }

    static PulseHolder* of(const QWidget* view) {
        for (QObject* child : view->children()) {
            if (auto* holder = dynamic_cast<PulseHolder*>(child)) {
                return holder;
            }
        }
        return nullptr;
    }

private:
    QPointer<AquaPulse> m_pulse;
};

}  // namespace

AquaPulse::AquaPulse(QWidget* view) : Surround(view, Layer::Glow), m_clock(new FrameClock(this)) {
    connect(m_clock, &FrameClock::frame, this, qOverload<>(&QWidget::update));
    connect(m_clock, &FrameClock::motionChanged, this, qOverload<>(&QWidget::update));
    place();
}

qreal AquaPulse::brightness(double seconds) {
    const double turn = std::fmod(std::max(seconds, 0.0), 2 * oneWaySeconds) / oneWaySeconds;
    return easeInOut().valueForProgress(turn <= 1 ? turn : 2 - turn);
}

qreal AquaPulse::opacity(qreal brightness) {
    return dimOpacity + (brightOpacity - dimOpacity) * brightness;
}

qreal AquaPulse::scale(qreal brightness) {
    return 1 + (brightScale - 1) * brightness;
}

QImage AquaPulse::glow(const QSizeF& size, qreal ratio) {
    QImage capsule =
        ImageOperations::transparent(size + QSizeF(2 * glowReach, 2 * glowReach), ratio);
    QPainter painter(&capsule);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(continuousCapsule(QRectF(QPointF(glowReach, glowReach), size)),
                     Aqua::blueMid());
    painter.end();
    return ImageOperations::blurredSilhouette(capsule, blurRadius * ratio, Aqua::blueMid());
}

void AquaPulse::paint(QPainter& painter, const QPointF& centre, const QImage& glow,
                      qreal brightness) {
    painter.save();
    painter.setOpacity(opacity(brightness));
    ImageOperations::drawScaled(painter, centre, glow, scale(brightness));
    painter.restore();
}

QRect AquaPulse::extent(const QRect& frame) const {
    return withGlow(frame, glowReach);
}

// Further out the glow is too faint for anyone to see that it is cut off.
QRect AquaPulse::needed(const QRect& frame) const {
    return withGlow(frame, seenReach);
}

void AquaPulse::placed() {
    m_clock->setWanted(view()->parentWidget() != nullptr && view()->isEnabled());
}

qreal AquaPulse::currentBrightness() const {
    // What an animation of no duration would have arrived at.
    return FrameClock::isMotionReduced() ? 1 : brightness(m_clock->seconds());
}

void AquaPulse::paintEvent(QPaintEvent* /*event*/) {
    const QSizeF size(frame().size());
    if (size.isEmpty()) {
        return;
    }
    const qreal ratio = devicePixelRatioF();
    if (m_glow.isNull() || m_glowSize != size || m_glow.devicePixelRatio() != ratio) {
        m_glowSize = size;
        m_glow = glow(size, ratio);
    }
    QPainter painter(this);
    paint(painter, QRectF(frame()).center(), m_glow, currentBrightness());
}

void AquaPulse::showEvent(QShowEvent* event) {
    if (!m_appeared) {
        m_clock->restart();
    }
    m_appeared = true;
    QWidget::showEvent(event);
}

void aquaPulse(QWidget* view, bool enabled) {
    PulseHolder* holder = PulseHolder::of(view);
    if (enabled && holder == nullptr) {
        new PulseHolder(view);
    } else if (!enabled) {
        delete holder;
    }
}

#include "moc_AquaPulse.cpp"
