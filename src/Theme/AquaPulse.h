// A glow behind a view that swells and fades for ever.
//
// aquaPulse() makes and removes it; it ends with its view. Main thread.
#pragma once

#include <QImage>
#include <QSizeF>

#include "Surround.h"

class FrameClock;

class AquaPulse final : public Surround {
    Q_OBJECT

public:
    explicit AquaPulse(QWidget* view);

    // How far the glow is from dim (0) to bright (1) after so many seconds; 0 at the beginning,
    // 1 after 0.9 seconds, 0 again after 1.8.
    static qreal brightness(double seconds);
    static qreal opacity(qreal brightness);
    static qreal scale(qreal brightness);

    // The blurred glow of a view of this size (points) at scale 1 and full opacity, in the middle
    // of an image that is just large enough.
    static QImage glow(const QSizeF& size, qreal ratio);
    // Draws a glow() around `centre` (points).
    static void paint(QPainter& painter, const QPointF& centre, const QImage& glow,
                      qreal brightness);

protected:
    QRect extent(const QRect& frame) const override;
    QRect needed(const QRect& frame) const override;
    void placed() override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    qreal currentBrightness() const;

    QSizeF m_glowSize;
    QImage m_glow;
    FrameClock* m_clock;
    bool m_appeared = false;
};

// With `enabled`, `view` glows, beginning with the dim state; without, there is no glow. Calling it
// again with the same value changes nothing.
void aquaPulse(QWidget* view, bool enabled);
