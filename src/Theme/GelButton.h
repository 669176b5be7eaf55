// How one gel button looks.
//
// Pure drawing; main thread (fonts). Lengths are points.
#pragma once

#include <QFont>
#include <QImage>
#include <QMargins>
#include <QSizeF>
#include <QString>

// Blue is the prominent look of a default action, gray the secondary one.
enum class Tint { blue, gray };

struct GelButton {
    Tint tint = Tint::blue;
    QString text;       // as shown, but for the mnemonic's "&"
    QFont font;         // font() unless the caller has a reason
    QSizeF size;        // of the capsule
    qreal pressed = 0;  // 0 released to 1 pressed
    bool enabled = true;
    bool focused = false;  // reached by the keyboard
    bool showMnemonic = false;

    friend bool operator==(const GelButton&, const GelButton&) = default;

    // Lucida Grande of 13 points.
    static QFont labelFont();

    // From the label to the capsule's edge.
    static QMargins padding() { return {18, 5, 18, 5}; }

    // What shadow and focus ring need around the capsule.
    static QMargins margins() { return {4, 4, 4, 4}; }

    // The whole button on a transparent ground, margins() around the capsule, for a screen of
    // `ratio` device pixels a point.
    QImage image(qreal ratio) const;
};
