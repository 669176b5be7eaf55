#include "TextStyle.h"

#include <QApplication>
#include <QFontInfo>

namespace TextStyle {

namespace {

constexpr double bodyPoints = 13;

double points(Style style) {
    switch (style) {
        case Style::Body:
        case Style::Headline:
            return bodyPoints;
        case Style::Title:
            return 22;
        case Style::Title2:
            return 17;
        case Style::Callout:
            return 12;
        case Style::Subheadline:
            return 11;
        case Style::Caption:
        case Style::Caption2:
            return 10;
    }
    return bodyPoints;
}

QFont scaled(QFont font, double toPoints) {
    // The desktop names its font's size in points or in pixels, never in both.
    const QFont base = QApplication::font();
    if (base.pointSizeF() > 0) {
        font.setPointSizeF(base.pointSizeF() * toPoints / bodyPoints);
    } else {
        font.setPixelSize(qMax(1, qRound(base.pixelSize() * toPoints / bodyPoints)));
    }
    return font;
}

}  // namespace

QFont font(Style style, std::optional<QFont::Weight> weight) {
    QFont result = scaled(QApplication::font(), points(style));
    result.setWeight(weight.value_or(style == Style::Headline ? QFont::Bold : QFont::Normal));
    return result;
}

double length(double points) {
    return QFontInfo(QApplication::font()).pixelSize() * points / bodyPoints;
}

}  // namespace TextStyle
