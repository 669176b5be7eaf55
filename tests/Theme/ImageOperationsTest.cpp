#include "ImageOperations.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <cmath>

namespace {

QImage onePixel(QColor colour) {
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

TEST(ImageOperationsTest, BrightnessIsAddedToEveryChannel) {
    QImage image = onePixel(QColor(100, 150, 200));
    ImageOperations::addBrightness(image, -0.08);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(80, 130, 180));
    ImageOperations::addBrightness(image, 0.2);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(131, 181, 231));
}

TEST(ImageOperationsTest, BrightnessStopsAtBlackAndAtWhite) {
    QImage image = onePixel(QColor(10, 128, 250));
    ImageOperations::addBrightness(image, -0.08);
    EXPECT_EQ(image.pixelColor(0, 0).red(), 0);
    ImageOperations::addBrightness(image, 0.9);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(230, 255, 255));
}

TEST(ImageOperationsTest, BrightnessOfAHalfCoveredPixelIsHalfAsMuchAndKeepsItsCoverage) {
    QImage image = onePixel(QColor(100, 150, 200, 128));
    const QRgb before = image.pixel(0, 0);
    const QRgb* raw = reinterpret_cast<const QRgb*>(image.constScanLine(0));
    const int redBefore = qRed(raw[0]);
    ImageOperations::addBrightness(image, -0.08);
    raw = reinterpret_cast<const QRgb*>(image.constScanLine(0));
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), qAlpha(before));
    EXPECT_NEAR(redBefore - qRed(raw[0]), 0.08 * 128, 1);
}

TEST(ImageOperationsTest, WhatIsInvisibleStaysInvisible) {
    QImage image = onePixel(Qt::transparent);
    ImageOperations::addBrightness(image, 0.5);
    ImageOperations::scaleSaturation(image, 0.3);
    ImageOperations::scaleOpacity(image, 0.45);
    EXPECT_EQ(image.pixel(0, 0), 0U);
}

TEST(ImageOperationsTest, SaturationMovesColoursTowardsTheirLuminance) {
    QImage image = onePixel(QColor(255, 0, 0));
    ImageOperations::scaleSaturation(image, 0.3);
    const double luminance = 0.2126 * 255;
    EXPECT_NEAR(image.pixelColor(0, 0).red(), luminance + (255 - luminance) * 0.3, 1);
    EXPECT_NEAR(image.pixelColor(0, 0).green(), luminance * 0.7, 1);
    ImageOperations::scaleSaturation(image, 0);
    EXPECT_EQ(image.pixelColor(0, 0).red(), image.pixelColor(0, 0).blue());
}

TEST(ImageOperationsTest, SaturationLeavesGreysAlone) {
    QImage image = onePixel(QColor(90, 90, 90));
    ImageOperations::scaleSaturation(image, 0.3);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(90, 90, 90));
}

TEST(ImageOperationsTest, OpacityScalesTheCoverageAndKeepsTheColour) {
    QImage image = onePixel(QColor(200, 100, 40));
    ImageOperations::scaleOpacity(image, 0.45);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 115);
    EXPECT_NEAR(image.pixelColor(0, 0).red(), 200, 2);
}

TEST(ImageOperationsTest, ABlurHasTheAskedStandardDeviation) {
    for (const double sigma : {1.0, 3.0, 6.0, 18.0}) {
        // A half plane: its blurred edge is the integral of the kernel.
        const int columns = 320;
        QImage image(columns, 3 * 60 + 1, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter(&image).fillRect(120, 0, 200, image.height(), Qt::black);
        const QImage blurred = ImageOperations::blurredSilhouette(image, sigma, Qt::black);
        double sum = 0;
        double moment = 0;
        for (int x = 40; x < 200; ++x) {
            const double step = qAlpha(blurred.pixel(x, 90)) - qAlpha(blurred.pixel(x - 1, 90));
            sum += step;
            moment += step * (x - 120) * (x - 120);
        }
        EXPECT_NEAR(std::sqrt(moment / sum), sigma, 0.5) << sigma;
    }
}

TEST(ImageOperationsTest, ABlurKeepsTheAmountOfPaintAndItsColour) {
    QImage image(80, 80, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter(&image).fillRect(30, 30, 20, 20, Qt::red);
    const QImage blurred = ImageOperations::blurredSilhouette(image, 4, QColor(77, 143, 240));
    double sum = 0;
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 80; ++x)
            sum += qAlpha(blurred.pixel(x, y)) / 255.0;
    EXPECT_NEAR(sum, 400, 4);
    const QColor centre = blurred.pixelColor(40, 40);
    EXPECT_NEAR(centre.red(), 77, 2);
    EXPECT_NEAR(centre.green(), 143, 2);
    EXPECT_NEAR(centre.blue(), 240, 2);
}

TEST(ImageOperationsTest, ABlurOfNothingOnlyPaintsInTheColour) {
    QImage image = onePixel(Qt::red);
    const QImage result = ImageOperations::blurredSilhouette(image, 0, QColor(0, 0, 0, 46));
    EXPECT_EQ(result.pixelColor(0, 0), QColor(0, 0, 0, 46));
}

TEST(ImageOperationsTest, ALineIsAWholeNumberOfDevicePixels) {
    EXPECT_EQ(ImageOperations::linePixels(1), 1);
    EXPECT_EQ(ImageOperations::linePixels(1.25), 1);
    EXPECT_EQ(ImageOperations::linePixels(1.5), 2);
    EXPECT_EQ(ImageOperations::linePixels(2), 2);
    EXPECT_EQ(ImageOperations::linePixels(3), 3);
    EXPECT_EQ(ImageOperations::linePixels(0.4), 1);
}

TEST(ImageOperationsTest, AnImageMadeForTheScreenIsCopiedPixelByPixelFromAnyCorner) {
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        QImage checks = ImageOperations::transparent(QSizeF(8, 8), ratio);
        for (int y = 0; y < checks.height(); ++y)
            for (int x = 0; x < checks.width(); ++x)
                checks.setPixelColor(x, y, (x + y) % 2 ? Qt::white : Qt::black);
        QImage screen = ImageOperations::transparent(QSizeF(30, 30), ratio);
        QPainter painter(&screen);
        painter.translate(7, 5);
        ImageOperations::drawAligned(painter, QPointF(2, 4), checks);
        painter.end();
        const QPoint corner(qRound(9 * ratio), qRound(9 * ratio));
        EXPECT_EQ(screen.copy(QRect(corner, checks.size())), checks) << ratio;
    }
}

TEST(ImageOperationsTest, AScaledImageHasNoSeams) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        QImage image = ImageOperations::transparent(QSizeF(60, 150), ratio);
        QPainter filling(&image);
        QLinearGradient gradient(0, 0, 60, 150);
        gradient.setColorAt(0, QColor(0, 0, 255, 40));
        gradient.setColorAt(1, QColor(255, 0, 0, 255));
        filling.fillRect(QRectF(0, 0, 60, 150), gradient);
        filling.end();

        const auto screen = [ratio](const auto& draw) {
            QImage result = ImageOperations::transparent(QSizeF(120, 220), ratio);
            QPainter painter(&result);
            painter.translate(10, 10);
            draw(painter);
            painter.end();
            return result;
        };
        const QImage banded = screen([&](QPainter& painter) {
            ImageOperations::drawScaled(painter, QPointF(50, 100), image, 1.07);
        });
        const QImage whole = screen([&](QPainter& painter) {
            const QSizeF size = image.deviceIndependentSize() * 1.07;
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(QRectF(QPointF(50 - size.width() / 2, 100 - size.height() / 2), size),
                              image);
        });
        int furthest = 0;
        for (int y = 0; y < whole.height(); ++y)
            for (int x = 0; x < whole.width(); ++x)
                furthest = std::max(
                    furthest, std::abs(qAlpha(whole.pixel(x, y)) - qAlpha(banded.pixel(x, y))));
        EXPECT_LE(furthest, 3) << ratio;
    }
}

}  // namespace
