// Where the image of a rip goes, judged before anything runs. Any thread; asks the file system.
#pragma once

#include <QString>
#include <optional>

namespace RipTarget {

// The absolute path of a file as the user named it; absent when the name is relative and the
// current folder was removed or has a name that is no text.
std::optional<QString> absolutePath(const QString& file);

// Why this path cannot be written, as a sentence; absent when nothing speaks against it. An
// ordinary file that is there already is none of these reasons, nor is a folder that is missing.
std::optional<QString> objection(const QString& path);

// Whether the folder that the file is to lie in exists.
bool hasFolder(const QString& path);

// Whether something stands at this path, be it a link to nothing.
bool isTaken(const QString& path);

}  // namespace RipTarget
