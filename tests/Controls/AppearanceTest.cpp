#include "Appearance.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QFontInfo>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <cmath>

#include "TestFolder.h"
#include "TextStyle.h"
#include "WindowStyle.h"

namespace {

using SystemAppearance::Scheme;

double channel(double value) {
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) +
           0.0722 * channel(color.blueF());
}

// 1 to 21, as accessibility guidelines reckon it.
double contrast(const QColor& a, const QColor& b) {
    const double light = std::max(luminance(a), luminance(b));
    const double dark = std::min(luminance(a), luminance(b));
    return (light + 0.05) / (dark + 0.05);
}

double pixels(TextStyle::Style style) {
    return QFontInfo(TextStyle::font(style)).pointSizeF();
}

}  // namespace

TEST(AppearanceTest, BothPalettesSetEveryRole) {
    for (const auto scheme : {Scheme::Light, Scheme::Dark}) {
        const QPalette palette = Appearance::palette(scheme);
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            for (int role = 0; role < QPalette::NColorRoles; ++role) {
                if (role != QPalette::NoRole) {
                    EXPECT_TRUE(palette.isBrushSet(group, QPalette::ColorRole(role))) << role;
                }
            }
        }
    }
}

TEST(AppearanceTest, TextIsReadableOnItsWindow) {
    using Appearance::Role;
    for (const auto scheme : {Scheme::Light, Scheme::Dark}) {
        const QColor window = Appearance::palette(scheme).color(QPalette::Window);
        for (const auto role :
             {Role::Primary, Role::Secondary, Role::Accent, Role::Green, Role::Orange, Role::Red}) {
            EXPECT_GE(contrast(Appearance::color(role, scheme), window), 4.5) << int(role);
        }
        const QPalette palette = Appearance::palette(scheme);
        EXPECT_GE(
            contrast(palette.color(QPalette::HighlightedText), palette.color(QPalette::Highlight)),
            4.5);
        EXPECT_GE(contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)),
                  4.5);
        EXPECT_GE(contrast(palette.color(QPalette::Text), palette.color(QPalette::Base)), 4.5);
        EXPECT_GE(
            contrast(palette.color(QPalette::ToolTipText), palette.color(QPalette::ToolTipBase)),
            4.5);
    }
}

namespace {

// The widget as the program's own style draws it in this scheme.
QImage drawn(QWidget& widget, Scheme scheme) {
    static WindowStyle style;
    widget.setStyle(&style);
    widget.setPalette(Appearance::palette(scheme));
    widget.setAutoFillBackground(true);
    widget.resize(120, 40);
    return widget.grab().toImage();
}

}  // namespace

TEST(AppearanceTest, ButtonsKeepTheirTextsReadable) {
    for (const auto scheme : {Scheme::Light, Scheme::Dark}) {
        QPushButton button;
        const QImage image = drawn(button, scheme);
        for (int y = 4; y < image.height() - 4; ++y) {
            const QColor face = image.pixelColor(image.width() / 2, y);
            for (const auto role : {Appearance::Role::Primary, Appearance::Role::Destructive}) {
                EXPECT_GE(contrast(Appearance::color(role, scheme), face), 4.5)
                    << int(role) << " at " << y;
            }
        }
    }
}

TEST(AppearanceTest, FieldsHaveAnEdgeInTheDark) {
    QLineEdit field;
    QProgressBar bar;
    bar.setTextVisible(false);
    for (QWidget* widget : {static_cast<QWidget*>(&field), static_cast<QWidget*>(&bar)}) {
        const QImage image = drawn(*widget, Scheme::Dark);
        const QColor window = Appearance::palette(Scheme::Dark).color(QPalette::Window);
        double best = 1;
        for (int y = 0; y < 3; ++y) {
            best = std::max(best, contrast(image.pixelColor(image.width() / 2, y), window));
        }
        EXPECT_GE(best, 3) << widget->metaObject()->className();
    }
    QCheckBox box;
    const QImage image = drawn(box, Scheme::Dark);
    double best = 1;
    for (int x = 0; x < 4; ++x) {
        best = std::max(best, contrast(image.pixelColor(x, image.height() / 2),
                                       Appearance::palette(Scheme::Dark).color(QPalette::Window)));
    }
    EXPECT_GE(best, 3) << "a box";
}

TEST(AppearanceTest, APaletteTellsItsScheme) {
    EXPECT_EQ(Appearance::schemeOf(Appearance::palette(Scheme::Light)), Scheme::Light);
    EXPECT_EQ(Appearance::schemeOf(Appearance::palette(Scheme::Dark)), Scheme::Dark);
}

TEST(AppearanceTest, TheApplicationFollowsThePreference) {
    const TestFolder folder;
    Appearance::follow();
    EXPECT_EQ(QApplication::palette(), Appearance::palette(Scheme::Light));
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                 "[General]\nAppleInterfaceStyle=Dark\n");
    Appearance::follow();
    EXPECT_EQ(QApplication::palette(), Appearance::palette(Scheme::Dark));
    // Of another length, or the settings file of the same instant would count as unchanged.
    folder.write(QStringLiteral("config/Spindrift/Spindrift.conf"),
                 "[General]\nAppleInterfaceStyle=dark\nretroMode=false\n");
    Appearance::follow();
    EXPECT_EQ(QApplication::palette(), Appearance::palette(Scheme::Light));
}

TEST(TextStyleTest, TheStylesStandInTheirProportions) {
    using TextStyle::Style;
    const double body = pixels(Style::Body);
    EXPECT_NEAR(pixels(Style::Title) / body, 22.0 / 13, 0.05);
    EXPECT_NEAR(pixels(Style::Title2) / body, 17.0 / 13, 0.05);
    EXPECT_NEAR(pixels(Style::Headline) / body, 1, 0.05);
    EXPECT_NEAR(pixels(Style::Callout) / body, 12.0 / 13, 0.05);
    EXPECT_NEAR(pixels(Style::Subheadline) / body, 11.0 / 13, 0.05);
    EXPECT_NEAR(pixels(Style::Caption) / body, 10.0 / 13, 0.05);
    EXPECT_NEAR(pixels(Style::Caption2) / body, 10.0 / 13, 0.05);
}

TEST(TextStyleTest, AHeadlineIsBoldAndAWeightCanBeAskedFor) {
    EXPECT_EQ(TextStyle::font(TextStyle::Style::Headline).weight(), QFont::Bold);
    EXPECT_EQ(TextStyle::font(TextStyle::Style::Caption).weight(), QFont::Normal);
    EXPECT_EQ(TextStyle::font(TextStyle::Style::Caption, QFont::Medium).weight(), QFont::Medium);
}

TEST(TextStyleTest, TheStylesGrowWithTheDesktopsFont) {
    const QFont before = QApplication::font();
    const double small = TextStyle::font(TextStyle::Style::Title).pointSizeF();
    QFont large = before;
    large.setPointSizeF(before.pointSizeF() * 2);
    QApplication::setFont(large);
    EXPECT_DOUBLE_EQ(TextStyle::font(TextStyle::Style::Title).pointSizeF(), 2 * small);
    QApplication::setFont(before);
}

TEST(TextStyleTest, ADesktopFontInPixelsIsFollowedToo) {
    const QFont before = QApplication::font();
    QFont font = before;
    font.setPixelSize(26);
    QApplication::setFont(font);
    EXPECT_EQ(TextStyle::font(TextStyle::Style::Title).pixelSize(), 44);
    EXPECT_DOUBLE_EQ(TextStyle::length(13), 26);
    QApplication::setFont(before);
}
