// A text as the characters that a user perceives: one for a letter with its marks, for an emoji of
// several code points, for a flag. Pure; any thread.
#pragma once

#include <QStringList>

namespace Characters {

// In order; joined they are the text again.
QStringList of(const QString& text);

}  // namespace Characters
