// A glow behind a view that swells and fades for ever.
//
// aquaPulse() makes and removes it. It is a widget of its own, because a glow is larger than what
// it surrounds: it lies directly behind the view, or behind that ancestor of it which leaves the
// glow room, and follows the view around. Belongs to its view; main thread.
#pragma once

#include <QImage>
#include <QPointer>
#include <QSizeF>
#include <QWidget>
#include <vector>

class FrameClock;

class AquaPulse final : public QWidget {
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
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void place();
    void watch();
    qreal currentBrightness() const;

    QPointer<QWidget> m_view;
    std::vector<QPointer<QWidget>> m_watched;
    QSizeF m_glowSize;
    QImage m_glow;
    FrameClock* m_clock;
    bool m_appeared = false;
    bool m_placing = false;
};

// With `enabled`, `view` glows, beginning with the dim state; without, there is no glow. Calling it
// again with the same value changes nothing.
void aquaPulse(QWidget* view, bool enabled);
