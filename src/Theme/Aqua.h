// The glossy look's six colours and its type.
//
// Stateless; the colours are made on first use and shared. Any thread may read them; font() needs
// the main thread and the application object.
#pragma once

#include <QColor>
#include <QFont>

namespace Aqua {

// Opaque sRGB colours: the tops, middles and bottoms of the two gel gradients.
const QColor& blueTop();
const QColor& blueMid();
const QColor& blueBottom();
const QColor& grayTop();
const QColor& grayMid();
const QColor& grayBottom();

// Lucida Grande, or the installed family that looks most like it, `points` points large. One point
// is one device-independent pixel, as for every length of this look, so that text and the shapes
// around it keep their proportions whatever the desktop's text resolution is.
QFont font(int points, QFont::Weight weight = QFont::Normal);

}  // namespace Aqua
