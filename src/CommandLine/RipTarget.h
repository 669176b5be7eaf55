// Where the image of a rip goes, judged before anything runs.
#pragma once

#include <QString>
#include <optional>

namespace RipTarget {

// The absolute path of a file as the user named it; absent when the name is relative and the
// current folder was removed or has a name that is no text.
std::optional<QString> absolutePath(const QString& file);

enum class Existing { Refuse, Replace };

// Why this path cannot be written, as a sentence; absent when nothing speaks against it. A folder
// that is missing is left to the rip itself.
std::optional<QString> objection(const QString& path, Existing existing);

}  // namespace RipTarget
