#include "PinstripeBackground.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QPainter>

#include "Pixels.h"

namespace {

const QColor base(237, 240, 245);
const Colour stripe = Colour::of(base).under(Colour::white(1), 0.6);

QImage painted(const QSize& size, double ratio) {
    QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    PinstripeBackground::paint(painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return image;
}

TEST(PinstripeBackgroundTest, AnAreaWithoutHeightHasNoStripes) {
    EXPECT_TRUE(PinstripeBackground::stripes(QSizeF(100, 0)).isEmpty());
    EXPECT_TRUE(PinstripeBackground::stripes(QSizeF(100, -8)).isEmpty());
}

TEST(PinstripeBackgroundTest, FourPointsHoldOneStripeAndALittleMoreTwo) {
    const QList<QRectF> one = PinstripeBackground::stripes(QSizeF(100, 4));
    ASSERT_EQ(one.size(), 1);
    EXPECT_EQ(one[0], QRectF(0, 0, 100, 1));
    const QList<QRectF> two = PinstripeBackground::stripes(QSizeF(100, 4.5));
    ASSERT_EQ(two.size(), 2);
    EXPECT_EQ(two[1], QRectF(0, 4, 100, 1));
}

TEST(PinstripeBackgroundTest, SixHundredPointsHoldAHundredAndFiftyStripes) {
    const QList<QRectF> stripes = PinstripeBackground::stripes(QSizeF(460, 600));
    ASSERT_EQ(stripes.size(), 150);
    for (int i = 0; i < 150; ++i)
        EXPECT_EQ(stripes[i], QRectF(0, i * 4, 460, 1));
}

TEST(PinstripeBackgroundTest, EveryFourthRowIsALightStripeOnTheBase) {
    const QImage image = painted(QSize(40, 30), 1);
    for (int y = 0; y < 30; ++y) {
        for (const int x : {0, 17, 39}) {
            EXPECT_TRUE(isColour(image.pixel(x, y), y % 4 == 0 ? stripe : Colour::of(base), 0))
                << x << " " << y;
        }
    }
}

TEST(PinstripeBackgroundTest, StripesAreEvenAtEveryPixelRatio) {
    struct Case {
        double ratio;
        int period;
        int line;
    };
    for (const Case& c : {Case{1.25, 5, 1}, Case{1.5, 6, 2}, Case{2, 8, 2}, Case{3, 12, 3}}) {
        const QImage image = painted(QSize(40, 40), c.ratio);
        for (int y = 0; y < image.height(); ++y) {
            const bool light = y % c.period < c.line;
            EXPECT_TRUE(isColour(image.pixel(5, y), light ? stripe : Colour::of(base), 0))
                << c.ratio << " row " << y;
        }
    }
}

TEST(PinstripeBackgroundTest, TheLastStripeBeginsAtTheLargestMultipleOfFourBelowTheHeight) {
    struct Case {
        double height;
        int stripes;
    };
    for (const Case& c : {Case{4, 1}, Case{4.5, 2}, Case{8, 2}, Case{8.5, 3}, Case{600, 150}}) {
        QImage image(20, 1240, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(2);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        PinstripeBackground::paint(painter, QRectF(0, 0, 10, c.height));
        painter.end();
        int stripes = 0;
        for (int y = 0; y < image.height(); ++y) {
            if (y >= c.height * 2) {
                EXPECT_EQ(image.pixel(9, y), 0U) << c.height << " row " << y;
                continue;
            }
            const bool light = y % 8 < 2;
            stripes += y % 8 == 0 ? 1 : 0;
            EXPECT_TRUE(isColour(image.pixel(9, y), light ? stripe : Colour::of(base), 0))
                << c.height << " row " << y;
        }
        EXPECT_EQ(stripes, c.stripes) << c.height;
    }
}

TEST(PinstripeBackgroundTest, NothingIsPaintedWithoutAHeight) {
    QImage image(10, 10, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    PinstripeBackground::paint(painter, QRectF(0, 0, 10, 0));
    painter.end();
    QImage untouched(10, 10, QImage::Format_ARGB32_Premultiplied);
    untouched.fill(Qt::transparent);
    EXPECT_EQ(image, untouched);
}

TEST(PinstripeBackgroundTest, APartThatIsRepaintedShowsTheSameStripes) {
    QWidget window;
    window.resize(80, 80);
    PinstripeBackground background(&window);
    const QImage whole = window.grab().toImage();
    const QImage part = window.grab(QRect(10, 7, 30, 41)).toImage();
    EXPECT_EQ(part, whole.copy(10, 7, 30, 41));
}

TEST(PinstripeBackgroundTest, FillsItsParentAndFollowsItsSize) {
    QWidget window;
    window.resize(100, 50);
    PinstripeBackground background(&window);
    EXPECT_EQ(background.geometry(), QRect(0, 0, 100, 50));
    window.show();
    window.resize(140, 90);
    EXPECT_EQ(background.geometry(), QRect(0, 0, 140, 90));
    EXPECT_TRUE(isColour(window.grab().toImage().pixel(130, 88), stripe));
}

TEST(PinstripeBackgroundTest, LiesBehindWhatIsThereAndWhatComesLater) {
    QWidget window;
    window.resize(100, 50);
    QLabel before(&window);
    PinstripeBackground background(&window);
    QLabel after(&window);
    const QObjectList& children = window.children();
    EXPECT_LT(children.indexOf(&background), children.indexOf(&before));
    EXPECT_LT(children.indexOf(&background), children.indexOf(&after));
}

}  // namespace
