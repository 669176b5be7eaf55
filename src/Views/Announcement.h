// Texts that screen readers read out when they change, although the keyboard's focus is elsewhere.
//
// Stateless; main thread.
#pragma once

class QLabel;

namespace Announcement {

// From now on screen readers take this label for a notification.
void prepare(QLabel* label);

// Has the prepared label's present text read out.
void announce(QLabel* label);

}  // namespace Announcement
