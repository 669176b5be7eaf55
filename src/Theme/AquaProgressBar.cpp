#include "AquaProgressBar.h"

#include <QPainter>
#include <cmath>

#include "FrameClock.h"

namespace {

constexpr int steps = 1000;
constexpr int usualWidth = 200;
constexpr int leastWidth = 40;

}  // namespace

AquaProgressBar::AquaProgressBar(QWidget* parent)
    : QProgressBar(parent), m_clock(new FrameClock(this)) {
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_clock, &FrameClock::frame, this, qOverload<>(&QWidget::update));
    connect(m_clock, &FrameClock::motionChanged, this, qOverload<>(&QWidget::update));
    refresh();
}

void AquaProgressBar::setFraction(std::optional<double> fraction) {
    m_fraction = fraction;
    refresh();
}

qreal AquaProgressBar::phase() const {
    return FrameClock::isMotionReduced() ? 0 : m_bar.phase(m_clock->seconds());
}

QSize AquaProgressBar::sizeHint() const {
    return {usualWidth, barHeight()};
}

QSize AquaProgressBar::minimumSizeHint() const {
    return {leastWidth, barHeight()};
}

void AquaProgressBar::refresh() {
    const double filled = GelBar::fillWidth(m_fraction, 1);
    if (m_fraction) {
        setRange(0, steps);
        setValue(static_cast<int>(std::lround(filled * steps)));
    } else {
        setRange(0, 0);
    }
    m_clock->setWanted(filled > 0);
    update();
}

void AquaProgressBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QRectF area(rect());
    area.setHeight(barHeight());
    const int top = (height() - barHeight()) / 2;
    area.moveTop(top);
    m_bar.paint(painter, area, m_fraction, phase(), layoutDirection());
}

void AquaProgressBar::showEvent(QShowEvent* event) {
    if (!m_appeared) {
        m_clock->restart();
    }
    m_appeared = true;
    QProgressBar::showEvent(event);
}

#include "moc_AquaProgressBar.cpp"
