// The program's own single-colour symbols, tinted.
//
// Drawn as SVG on a grid of 24 by 24 and compiled in; a symbol's name is its file's name without
// ".svg". Pixmaps are rendered for the asked device pixel ratio, never scaled, and kept in
// QPixmapCache. Main thread only, after the application object exists.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>
#include <QStringList>

namespace Symbol {

// All names, sorted.
QStringList names();

// The side in points of the square that a symbol takes beside text of `points` points: the drawing
// then is about as high as the text's capitals and descenders together.
int side(qreal points);

// The symbol in `colour` for text of `points` points: side(points) points square, with
// devicePixelRatio() set. Null when there is no such symbol.
QPixmap pixmap(const QString& name, qreal points, const QColor& colour, qreal devicePixelRatio);

// The symbol as an icon that renders sharp at every size and ratio. Its disabled look is the same
// drawing at 35 % of the colour's opacity. Null when there is no such symbol.
QIcon icon(const QString& name, const QColor& colour);

// The program's own icon in its colours, sharp at every size and ratio. Never null.
QIcon applicationIcon();

}  // namespace Symbol
