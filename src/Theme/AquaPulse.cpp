#include "AquaPulse.h"

#include <QEasingCurve>
#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionButton>
#include <algorithm>
#include <cmath>

#include "Aqua.h"
#include "ContinuousCapsule.h"
#include "FrameClock.h"
#include "ImageOperations.h"

namespace {

constexpr double kOneWaySeconds = 0.9;
constexpr qreal kBlurRadius = 6;
constexpr qreal kReach = 3 * kBlurRadius;
constexpr qreal kSeenReach = 2 * kBlurRadius;
constexpr qreal kDimOpacity = 0.35;
constexpr qreal kBrightOpacity = 0.9;
constexpr qreal kBrightScale = 1.08;

const QEasingCurve& easeInOut() {
    static const QEasingCurve curve = [] {
        QEasingCurve bezier(QEasingCurve::BezierSpline);
        bezier.addCubicBezierSegment(QPointF(0.42, 0), QPointF(0.58, 1), QPointF(1, 1));
        return bezier;
    }();
    return curve;
}

// The part of a widget that a layout sees: without a gel button's shadow and focus ring.
QRect visibleFrame(const QWidget* view) {
    if (qobject_cast<const QPushButton*>(view) == nullptr)
        return view->rect();
    QStyleOptionButton option;
    option.initFrom(view);
    const QRect frame =
        view->style()->subElementRect(QStyle::SE_PushButtonLayoutItem, &option, view);
    return frame.isValid() ? frame : view->rect();
}

// What a frame and its glow of this reach take at their largest.
QRect withGlow(const QRect& frame, qreal reach) {
    const QPointF centre = QRectF(frame).center();
    const QSizeF size = (QSizeF(frame.size()) + QSizeF(2 * reach, 2 * reach)) * kBrightScale;
    return QRectF(centre - QPointF(size.width() / 2, size.height() / 2), size).toAlignedRect();
}

// Whether nothing that lies behind this widget can be seen through it.
bool hasOwnGround(const QWidget* widget) {
    if (widget->isWindow() || widget->autoFillBackground())
        return true;
    const QObjectList& children = widget->children();
    return std::any_of(children.begin(), children.end(), [widget](const QObject* child) {
        const auto* ground = qobject_cast<const QWidget*>(child);
        return ground != nullptr && ground->testAttribute(Qt::WA_OpaquePaintEvent) &&
               ground->isVisibleTo(widget) && ground->geometry().contains(widget->rect());
    });
}

// Ends the glow together with its view, and is how the glow of a view is found.
class PulseHolder final : public QObject {
public:
    explicit PulseHolder(QWidget* view) : QObject(view), m_pulse(new AquaPulse(view)) {}
    ~PulseHolder() override { delete m_pulse; }

    static PulseHolder* of(const QWidget* view) {
        for (QObject* child : view->children()) {
            if (auto* holder = dynamic_cast<PulseHolder*>(child))
                return holder;
        }
        return nullptr;
    }

private:
    QPointer<AquaPulse> m_pulse;
};

}  // namespace

AquaPulse::AquaPulse(QWidget* view)
    : QWidget(view->parentWidget()), m_view(view), m_clock(new FrameClock(this)) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    connect(m_clock, &FrameClock::frame, this, qOverload<>(&QWidget::update));
    connect(m_clock, &FrameClock::motionChanged, this, qOverload<>(&QWidget::update));
    place();
}

qreal AquaPulse::brightness(double seconds) {
    const double turn = std::fmod(std::max(seconds, 0.0), 2 * kOneWaySeconds) / kOneWaySeconds;
    return easeInOut().valueForProgress(turn <= 1 ? turn : 2 - turn);
}

qreal AquaPulse::opacity(qreal brightness) {
    return kDimOpacity + (kBrightOpacity - kDimOpacity) * brightness;
}

qreal AquaPulse::scale(qreal brightness) {
    return 1 + (kBrightScale - 1) * brightness;
}

QImage AquaPulse::glow(const QSizeF& size, qreal ratio) {
    QImage capsule = ImageOperations::transparent(size + QSizeF(2 * kReach, 2 * kReach), ratio);
    QPainter painter(&capsule);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(continuousCapsule(QRectF(QPointF(kReach, kReach), size)), Aqua::blueMid());
    painter.end();
    return ImageOperations::blurredSilhouette(capsule, kBlurRadius * ratio, Aqua::blueMid());
}

void AquaPulse::paint(QPainter& painter, const QPointF& centre, const QImage& glow,
                      qreal brightness) {
    painter.save();
    painter.setOpacity(opacity(brightness));
    ImageOperations::drawScaled(painter, centre, glow, scale(brightness));
    painter.restore();
}

bool AquaPulse::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::ParentChange:
        case QEvent::EnabledChange:
        case QEvent::StyleChange:
        case QEvent::ZOrderChange:
            place();
            break;
        default:
            break;
    }
    return QWidget::eventFilter(watched, event);
}

void AquaPulse::place() {
    // Showing and stacking the glow makes events of their own.
    if (m_placing || !m_view)
        return;
    m_placing = true;
    watch();
    QWidget* branch = m_view;
    QWidget* room = m_view->parentWidget();
    QRect frame;
    while (room != nullptr) {
        frame = visibleFrame(m_view);
        frame.moveTopLeft(m_view->mapTo(room, frame.topLeft()));
        // Further out the glow is too faint for anyone to see that it is cut off.
        if (room->rect().contains(withGlow(frame, kSeenReach)) || hasOwnGround(room))
            break;
        branch = room;
        room = room->parentWidget();
    }
    if (room == nullptr) {
        hide();
    } else {
        if (parentWidget() != room)
            setParent(room);
        stackUnder(branch);
        setGeometry(withGlow(frame, kReach));
        // Not the view's visibility in its window: the glow is shown and hidden with the window
        // too.
        setVisible(m_view->isVisibleTo(room));
    }
    m_clock->setWanted(room != nullptr && m_view->isEnabled());
    m_placing = false;
    update();
}

void AquaPulse::watch() {
    for (const QPointer<QWidget>& widget : m_watched) {
        if (widget)
            widget->removeEventFilter(this);
    }
    m_watched.clear();
    for (QWidget* widget = m_view; widget != nullptr; widget = widget->parentWidget()) {
        widget->installEventFilter(this);
        m_watched.emplace_back(widget);
        if (widget->isWindow())
            break;
    }
}

qreal AquaPulse::currentBrightness() const {
    // What an animation of no duration would have arrived at.
    return FrameClock::isMotionReduced() ? 1 : brightness(m_clock->seconds());
}

void AquaPulse::paintEvent(QPaintEvent* /*event*/) {
    if (!m_view)
        return;
    const QRect frame = visibleFrame(m_view);
    const qreal ratio = devicePixelRatioF();
    if (m_glow.isNull() || m_glowSize != QSizeF(frame.size()) ||
        m_glow.devicePixelRatio() != ratio) {
        m_glowSize = frame.size();
        m_glow = glow(m_glowSize, ratio);
    }
    QPainter painter(this);
    const QPointF centre = mapFrom(window(), m_view->mapTo(window(), frame.topLeft()));
    paint(painter, centre + QPointF(frame.width() / 2.0, frame.height() / 2.0), m_glow,
          currentBrightness());
}

void AquaPulse::showEvent(QShowEvent* event) {
    if (!m_appeared)
        m_clock->restart();
    m_appeared = true;
    QWidget::showEvent(event);
}

void aquaPulse(QWidget* view, bool enabled) {
    PulseHolder* holder = PulseHolder::of(view);
    if (enabled && holder == nullptr)
        new PulseHolder(view);
    else if (!enabled)
        delete holder;
}
