// A light background of fine lines, one every four points.
//
// Fills its parent and lies behind all of the parent's other children; follows the parent's size by
// itself. Owned by its parent; main thread. Hidden, it leaves the parent as it was.
#pragma once

#include <QList>
#include <QRectF>
#include <QWidget>

class PinstripeBackground final : public QWidget {
    Q_OBJECT

public:
    explicit PinstripeBackground(QWidget* parent);

    // The light lines on an area of this size, from the top down, in points. None on an area
    // without height.
    static QList<QRectF> stripes(const QSizeF& size);

    // Paints the background into `rect` (points), the first line at its top. On screens with
    // fractions of a device pixel a point, lines and gaps take whole device pixels.
    static void paint(QPainter& painter, const QRectF& rect);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void fillParent();
};
