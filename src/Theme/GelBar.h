// How the gel progress bar looks, and what of it can be kept from frame to frame.
//
// Pure drawing; main thread. Lengths are points.
#pragma once

#include <QImage>
#include <QRectF>
#include <Qt>
#include <optional>
#include <vector>

class QPainter;

class GelBar final {
public:
    // `stripeWidth` must be positive: the pattern repeats every two of it.
    explicit GelBar(qreal stripeWidth = 9);

    // How wide the fill of a bar of `width` is. All of it for an absent value and for one that is
    // not a number; otherwise the value's share, at least nothing and at most all.
    static qreal fillWidth(std::optional<double> value, qreal width);

    // How much the light stripes cover (0 to 1) of the device pixels of a diagonal that rises to
    // the right at 45 degrees: of all pixels whose column and row add up to the index. Stripes lean
    // right by the bar's height, so this is all there is to know about them. `phase` in points.
    std::vector<float> stripeCoverage(int diagonals, qreal height, qreal phase, qreal ratio) const;

    // The stripes' offset after so many seconds: one period every half second.
    qreal phase(double seconds) const;

    // Paints the whole bar into `rect`. Keeps its layers until size, fill or device change. In a
    // right-to-left direction the fill begins on the right.
    void paint(QPainter& painter, const QRectF& rect, std::optional<double> value, qreal phase,
               Qt::LayoutDirection direction = Qt::LeftToRight);

private:
    struct Key {
        QSizeF size;
        QRectF fill;
        qreal ratio = 0;
        friend bool operator==(const Key&, const Key&) = default;
    };

    void drawLayers(const Key& key);
    void drawStripes(QImage& fill, qreal phase) const;

    qreal m_stripeWidth;
    Key m_key;
    QImage m_track;
    QImage m_fill;    // without its stripes and border
    QImage m_border;  // the fill's
    QImage m_frame;   // the fill as last composed
};
