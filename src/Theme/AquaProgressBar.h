// The glossy progress bar: a blue gel fill whose light stripes glide to the right.
//
// Takes the width that it is offered and is exactly barHeight() high. Assistive programs see an
// ordinary progress bar, busy while the fraction is absent. Owned by its parent; main thread.
#pragma once

#include <QProgressBar>
#include <optional>

#include "GelBar.h"

class FrameClock;

class AquaProgressBar final : public QProgressBar {
    Q_OBJECT

public:
    explicit AquaProgressBar(QWidget* parent = nullptr);

    // The share of the work that is done, 0 to 1; absent while that is unknown, as at first. Less
    // than 0 shows an empty bar; more than 1 and what is not a number a full one.
    std::optional<double> fraction() const { return m_fraction; }
    void setFraction(std::optional<double> fraction);

    // The stripes' offset to the right in points, 0 to two stripes. 0 while motion is reduced.
    qreal phase() const;

    static int barHeight() { return 14; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    // Whole numbers are for assistive programs only.
    using QProgressBar::setMaximum;
    using QProgressBar::setMinimum;
    using QProgressBar::setRange;
    using QProgressBar::setValue;

    void refresh();

    std::optional<double> m_fraction;
    GelBar m_bar;
    FrameClock* m_clock;
    bool m_appeared = false;
};
