// Removing large files without waiting for the file system to give back their space.
//
// Freeing the blocks of an image takes a quarter of a second a gigabyte on a common disk, and a
// window that waits for it stands still. The name goes at once; the space is freed by a background
// thread, or by the end of the process. Any thread.
#pragma once

#include <sys/types.h>

#include <QString>
#include <optional>

#include "Descriptor.h"

namespace FileRemoval {

// Removes the name of a file or a link, never a folder. 0, or the error number.
int remove(const QString& path);

// Moves a regular file to the user's trash; what cannot go there is removed as above.
int moveToTrash(const QString& path);

// Which file it is, whatever its name. Absent when there is nothing.
struct Identity {
    dev_t device;
    ino_t inode;
    bool operator==(const Identity&) const = default;
};
std::optional<Identity> identityOf(const QString& path);

// Holds the file's content until it is released: open this before something else removes or
// replaces the file, and let it go with release(). Only holds, neither reads nor writes. Not open
// when there is no regular file that is worth it.
Descriptor hold(const QString& path);
void release(Descriptor content);

}  // namespace FileRemoval
