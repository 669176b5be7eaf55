// Copies that a killed program has left beside their destinations, under names that nobody sees.
//
// A copy is claimed by whoever writes it, with a lock that ends with the process however that ends.
// Stateless; any thread.
#pragma once

#include <QString>

namespace AbandonedCopies {

// Path of a new copy beside this file: hidden, and unlike any other.
QString freshPath(const QString& destination);

// Marks the file behind the descriptor as being written for as long as the descriptor is open.
void claim(int descriptor);

// Removes from a folder the copies of this user that nobody claims and nobody has written to for an
// hour. May wait for the file system.
void removeFrom(const QString& folder);

}  // namespace AbandonedCopies
