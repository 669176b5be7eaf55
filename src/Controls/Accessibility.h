// What screen readers take a widget for, where Qt's own choice is not the right one.
//
// Stateless; main thread.
#pragma once

#include <QAccessible>

class QLabel;
class QWidget;

namespace Accessibility {

// From now on screen readers take the widget for this. To be called before any of them asks.
void setRole(QWidget* widget, QAccessible::Role role);

// Has the label's present text read out, although the keyboard's focus is elsewhere; its role
// should be QAccessible::Notification.
void announce(QLabel* label);

}  // namespace Accessibility
