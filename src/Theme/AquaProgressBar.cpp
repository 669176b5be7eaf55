#include "AquaProgressBar.h"

#include <QPainter>
#include <cmath>

#include "FrameClock.h"

namespace {

constexpr int kSteps = 1000;
constexpr int kUsualWidth = 200;
constexpr int kLeastWidth = 40;

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
    return {kUsualWidth, barHeight()};
}

QSize AquaProgressBar::minimumSizeHint() const {
    return {kLeastWidth, barHeight()};
}

void AquaProgressBar::refresh() {
    const double filled = GelBar::fillWidth(m_fraction, 1);
    if (m_fraction) {
        setRange(0, kSteps);
        setValue(static_cast<int>(std::lround(filled * kSteps)));
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
    if (!m_appeared)
        m_clock->restart();
    m_appeared = true;
    QProgressBar::showEvent(event);
}
