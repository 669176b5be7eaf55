#include "Aqua.h"

#include <QStringList>

namespace {

// Whole 8-bit steps, since QColor cuts its 16-bit components off where screens round.
QColor components(double red, double green, double blue) {
    return QColor(qRound(red * 255), qRound(green * 255), qRound(blue * 255));
}

QColor white(double level) {
    return components(level, level, level);
}

}  // namespace

const QColor& Aqua::blueTop() {
    static const QColor colour = components(0.66, 0.80, 1.00);
    return colour;
}

const QColor& Aqua::blueMid() {
    static const QColor colour = components(0.30, 0.56, 0.94);
    return colour;
}

const QColor& Aqua::blueBottom() {
    static const QColor colour = components(0.16, 0.40, 0.82);
    return colour;
}

const QColor& Aqua::grayTop() {
    static const QColor colour = white(1.00);
    return colour;
}

const QColor& Aqua::grayMid() {
    static const QColor colour = white(0.95);
    return colour;
}

const QColor& Aqua::grayBottom() {
    static const QColor colour = white(0.86);
    return colour;
}

QFont Aqua::font(int points, QFont::Weight weight) {
    // Its siblings first, then the faces with its wide round letters and tall lower case, then what
    // the desktop calls sans serif.
    static const QStringList families{
        QStringLiteral("LucidaGrande"), QStringLiteral("Lucida Grande"),
        QStringLiteral("Lucida Sans"),  QStringLiteral("Lucida Sans Unicode"),
        QStringLiteral("Luxi Sans"),    QStringLiteral("Bitstream Vera Sans"),
        QStringLiteral("DejaVu Sans"),  QStringLiteral("Verdana"),
        QStringLiteral("Droid Sans"),   QStringLiteral("Noto Sans"),
        QStringLiteral("sans-serif"),
    };
    QFont font;
    font.setFamilies(families);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(points);
    font.setWeight(weight);
    return font;
}
