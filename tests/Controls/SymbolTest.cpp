#include "Symbol.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

namespace {

// How many pixels of the image are covered at least half.
int coveredPixels(const QImage& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y).alpha() >= 128 ? 1 : 0;
    return count;
}

bool touchesTheEdge(const QImage& image) {
    for (int i = 0; i < image.width(); ++i) {
        if (image.pixelColor(i, 0).alpha() > 200 ||
            image.pixelColor(i, image.height() - 1).alpha() > 200 ||
            image.pixelColor(0, i).alpha() > 200 ||
            image.pixelColor(image.width() - 1, i).alpha() > 200)
            return true;
    }
    return false;
}

TEST(SymbolTest, EveryNameThatTheWindowsUseIsThere) {
    const QStringList expected{
        "checkmark.circle.fill",
        "checkmark.seal.fill",
        "checkmark.shield",
        "eject.fill",
        "exclamationmark.triangle",
        "exclamationmark.triangle.fill",
        "folder",
        "gauge.with.dots.needle.67percent",
        "lock.fill",
        "opticaldisc",
        "opticaldiscdrive",
        "opticaldiscdrive.fill",
        "xmark.octagon.fill",
    };
    EXPECT_EQ(Symbol::names(), expected);
}

TEST(SymbolTest, EverySymbolDrawsSomethingInsideItsSquareAtEveryRatio) {
    for (const QString& name : Symbol::names()) {
        for (const qreal ratio : {1.0, 1.5, 2.0, 3.0}) {
            SCOPED_TRACE(name.toStdString() + " at " + std::to_string(ratio));
            const QImage image = Symbol::pixmap(name, 16, Qt::black, ratio).toImage();
            const int pixels = static_cast<int>(20 * ratio);
            ASSERT_EQ(image.size(), QSize(pixels, pixels));
            EXPECT_EQ(image.devicePixelRatio(), ratio);
            EXPECT_GT(coveredPixels(image), pixels * pixels / 8);
            EXPECT_LT(coveredPixels(image), pixels * pixels * 9 / 10);
            EXPECT_FALSE(touchesTheEdge(image)) << "the drawing is cut off";
        }
    }
}

TEST(SymbolTest, ASymbolHasOnlyTheAskedColour) {
    const QColor colour(200, 40, 10);
    const QImage image = Symbol::pixmap("eject.fill", 28, colour, 1).toImage();
    int solid = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() < 255)
                continue;
            ++solid;
            EXPECT_EQ(pixel.rgb(), colour.rgb());
        }
    }
    EXPECT_GT(solid, 100);
}

TEST(SymbolTest, ATranslucentColourIsDrawnTranslucent) {
    const QImage image =
        Symbol::pixmap("opticaldiscdrive.fill", 28, QColor(0, 0, 0, 100), 1).toImage();
    int strongest = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            strongest = std::max(strongest, image.pixelColor(x, y).alpha());
    EXPECT_EQ(strongest, 100);
}

TEST(SymbolTest, ColoursSizesAndRatiosAreNotMixedUpByTheCache) {
    const auto at = [](const QColor& colour, qreal points, qreal ratio) {
        return Symbol::pixmap("folder", points, colour, ratio).toImage();
    };
    const QImage red = at(Qt::red, 16, 1);
    EXPECT_NE(at(Qt::blue, 16, 1), red);
    EXPECT_NE(at(Qt::red, 18, 1).size(), red.size());
    EXPECT_NE(at(Qt::red, 16, 2).size(), red.size());
    EXPECT_EQ(at(Qt::red, 16, 1), red);
    // The same number of device pixels, but another ratio.
    EXPECT_EQ(at(Qt::red, 8, 2).devicePixelRatio(), 2.0);
    EXPECT_EQ(at(Qt::red, 16, 1).devicePixelRatio(), 1.0);
}

TEST(SymbolTest, ADoubledRatioIsRenderedAndNotScaledUp) {
    const QImage once = Symbol::pixmap("opticaldisc", 16, Qt::black, 1).toImage();
    const QImage twice = Symbol::pixmap("opticaldisc", 16, Qt::black, 2).toImage();
    EXPECT_NE(once.scaled(twice.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                  .convertToFormat(twice.format()),
              twice);
}

TEST(SymbolTest, AnUnknownNameIsANullPixmapAndIcon) {
    EXPECT_TRUE(Symbol::pixmap("nonesuch", 16, Qt::black, 1).isNull());
    EXPECT_TRUE(Symbol::pixmap("", 16, Qt::black, 1).isNull());
    EXPECT_TRUE(Symbol::icon("nonesuch", Qt::black).isNull());
}

TEST(SymbolTest, ASizeOfNothingIsANullPixmap) {
    EXPECT_TRUE(Symbol::pixmap("folder", 0, Qt::black, 1).isNull());
    EXPECT_TRUE(Symbol::pixmap("folder", -4, Qt::black, 1).isNull());
}

TEST(SymbolTest, AnIconIsSharpOnAScreenOfTwoPixelsAPoint) {
    const QIcon icon = Symbol::icon("eject.fill", Qt::black);
    ASSERT_FALSE(icon.isNull());
    QImage screen(48, 48, QImage::Format_ARGB32_Premultiplied);
    screen.setDevicePixelRatio(2);
    screen.fill(Qt::transparent);
    QPainter painter(&screen);
    icon.paint(&painter, QRect(0, 0, 24, 24));
    painter.end();
    QImage direct = Symbol::pixmap("eject.fill", 24 / 1.25, Qt::black, 2).toImage();
    EXPECT_EQ(screen, direct);
}

TEST(SymbolTest, ADisabledIconIsFaint) {
    const QIcon icon = Symbol::icon("eject.fill", Qt::black);
    const QImage normal = icon.pixmap(QSize(24, 24), QIcon::Normal).toImage();
    const QImage disabled = icon.pixmap(QSize(24, 24), QIcon::Disabled).toImage();
    EXPECT_EQ(normal.pixelColor(12, 12).alpha(), 255);
    EXPECT_NEAR(disabled.pixelColor(12, 12).alpha(), 89, 1);
}

TEST(SymbolTest, TheApplicationsIconIsColourfulAndFillsItsSquare) {
    const QImage image = Symbol::applicationIcon().pixmap(QSize(64, 64)).toImage();
    ASSERT_EQ(image.size(), QSize(64, 64));
    EXPECT_GT(coveredPixels(image), 64 * 64 / 2);
    int colourful = 0;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            colourful += image.pixelColor(x, y).hsvSaturation() > 120 ? 1 : 0;
    EXPECT_GT(colourful, 400);
}

}  // namespace
