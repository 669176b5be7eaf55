// On a screen of one and a half device pixels a point, where every other point begins in the middle
// of a pixel.
#include <gtest/gtest.h>

#include <QPainter>
#include <QPushButton>

#include "AquaControls.h"
#include "AquaProgressBar.h"
#include "FrameClock.h"
#include "PinstripeBackground.h"
#include "Pixels.h"

namespace {

class FractionalScreenTest : public testing::Test {
protected:
    FractionalScreenTest() {
        FrameClock::setReducedMotion(true);
        QPalette white;
        white.setColor(QPalette::Window, Qt::white);
        window.setPalette(white);
        window.resize(121, 81);
    }
    ~FractionalScreenTest() override { FrameClock::setReducedMotion(false); }

    // The window's own pixels; `paint` paints what they should be, in device pixels.
    template <typename Paint>
    int furthestFrom(Paint paint) {
        window.show();
        const QImage shown = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
        EXPECT_EQ(shown.devicePixelRatio(), 1.5);
        QImage expected(shown.size(), QImage::Format_RGB32);
        expected.fill(Qt::white);
        QPainter painter(&expected);
        paint(painter);
        painter.end();
        int furthest = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const QRgb a = shown.pixel(x, y);
                const QRgb b = expected.pixel(x, y);
                furthest =
                    std::max({furthest, std::abs(qRed(a) - qRed(b)),
                              std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
            }
        }
        return furthest;
    }

    static QPoint pixel(const QPoint& points) {
        return {qRound(points.x() * 1.5), qRound(points.y() * 1.5)};
    }

    QWidget window;
};

// As `image` looks on a screen of one pixel a point: every pixel of it a pixel.
void drawPixels(QPainter& painter, const QPoint& corner, QImage image) {
    image.setDevicePixelRatio(1);
    painter.drawImage(corner, image);
}

TEST_F(FractionalScreenTest, AGelButtonIsWholeWhereverItStands) {
    QPushButton button("Rip", &window);
    aquaButton(&button, true, Tint::gray);
    for (const QSize& size : {QSize(60, 26), QSize(61, 27)}) {
        for (const QPoint& corner :
             {QPoint(20, 20), QPoint(21, 20), QPoint(20, 21), QPoint(21, 21)}) {
            button.setGeometry(QRect(corner, size));
            GelButton look;
            look.tint = Tint::gray;
            look.text = button.text();
            look.font = GelButton::labelFont();
            look.size = size;
            EXPECT_LE(furthestFrom([&](QPainter& painter) {
                          drawPixels(painter, pixel(corner) - QPoint(6, 6), look.image(1.5));
                      }),
                      1)
                << corner.x() << " " << corner.y() << " " << size.width();
        }
    }
}

TEST_F(FractionalScreenTest, AGelBarIsWholeWhereverItStands) {
    AquaProgressBar bar(&window);
    bar.setFraction(0.5);
    for (const int width : {80, 81}) {
        for (const QPoint& corner :
             {QPoint(20, 20), QPoint(21, 20), QPoint(20, 21), QPoint(21, 21)}) {
            bar.setGeometry(QRect(corner, QSize(width, AquaProgressBar::barHeight())));
            const QPoint size = pixel(corner + QPoint(width, 14)) - pixel(corner);
            QImage image(size.x(), size.y(), QImage::Format_ARGB32_Premultiplied);
            image.setDevicePixelRatio(1.5);
            image.fill(Qt::transparent);
            QPainter drawing(&image);
            GelBar().paint(drawing, QRectF(QPointF(0, 0), QSizeF(image.size()) / 1.5), 0.5, 0);
            drawing.end();
            EXPECT_LE(
                furthestFrom([&](QPainter& painter) { drawPixels(painter, pixel(corner), image); }),
                1)
                << corner.x() << " " << corner.y() << " " << width;
        }
    }
}

TEST_F(FractionalScreenTest, PinstripesAreEven) {
    PinstripeBackground background(&window);
    EXPECT_LE(furthestFrom([](QPainter& painter) {
                  for (int y = 0; y < 200; ++y) {
                      painter.fillRect(0, y, 400, 1,
                                       y % 6 < 2 ? QColor(248, 249, 251) : QColor(237, 240, 245));
                  }
              }),
              0);
}

}  // namespace
