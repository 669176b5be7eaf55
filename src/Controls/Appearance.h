// The program's colours: one full palette for light and one for dark, and the colours of texts.
//
// Stateless but for the application's palette; main thread. Windows call follow() when they are
// rebuilt, so that a change of the desktop's appearance is taken over then.
#pragma once

#include <QColor>
#include <QPalette>

#include "SystemAppearance.h"

class QWidget;

namespace Appearance {

// Destructive is the text of a button that destroys something.
enum class Role { Primary, Secondary, Accent, Green, Orange, Red, Gray, Destructive };

// Every role of every colour group, so that nothing of the desktop's own theme shines through.
QPalette palette(SystemAppearance::Scheme scheme);

QColor color(Role role, SystemAppearance::Scheme scheme);
// The colour that suits a palette made by palette().
QColor color(Role role, const QPalette& palette);

// The scheme that this palette was made for.
SystemAppearance::Scheme schemeOf(const QPalette& palette);

// Sets the widget style and the palette of the desktop's current appearance for the whole
// application. Does nothing when both are already so.
void follow();

}  // namespace Appearance
