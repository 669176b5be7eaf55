// Tells the user through the desktop's notifications how a rip ended.
//
// Fire and forget: a call costs its caller nothing, whatever the bus or the daemon does, and a
// notification that cannot be delivered is dropped without a word. Any thread; the end of the
// program waits for nothing.
#pragma once

#include <QString>

namespace NotificationManager {

// The desktop needs no permission; connects to the bus in the background, which starts the daemon
// if need be, so that the first notification is quick. Call at the start of what will be told of.
void requestAuthorization();

// A new notification, never the replacement of another. Plain texts.
void notify(const QString& title, const QString& body);

// Gives notifications that are on their way at most this long to leave; for programs that end right
// after the last one.
void flush(int milliseconds);

}  // namespace NotificationManager
