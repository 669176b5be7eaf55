// Large files that a program which has ended may have left, under names that only this program
// gives.
//
// A file is claimed by whoever still needs it, with a lock that ends with the process however that
// ends. Stateless; any thread.
#pragma once

#include <QString>
#include <QStringList>

namespace AbandonedFiles {

// What a kind of them is called: a fresh identifier stands between the two.
struct Names {
    QString prefix;
    QString suffix;
};

// Marks the file behind the descriptor as being needed for as long as the descriptor is open.
void claim(int descriptor);

// The paths of a folder's files of those names that belong to this user and that nobody claims. May
// wait for the file system.
QStringList unclaimed(const QString& folder, const Names& names);

// Removes those of them that nobody has written to for an hour.
void removeFrom(const QString& folder, const Names& names);

// Removes one of them, unless somebody has claimed it meanwhile. 0, or the error number.
int remove(const QString& path);

}  // namespace AbandonedFiles
