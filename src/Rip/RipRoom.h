// Whether there is room for a rip, and where its temporary images go: known before the first sector
// is read. Any thread; asks the file systems.
#pragma once

#include <QString>
#include <optional>

#include "StagedCopy.h"

namespace RipRoom {

// A folder and what its file system has to give.
struct Place {
    QString folder;
    quint64 fileSystem;  // tells one from another
    qint64 freeBytes;    // for this user
    qint64 longestFile;  // bytes
};

struct Rip {
    qint64 imageBytes;
    bool thorough;
    qint64 replacedBytes = 0;  // what the file at the destination gives back when it goes
};

struct Plan {
    QString temporaryFolder;
    std::optional<QString> objection;  // why the rip will fail, and what to do, as a sentence
};

// The temporary images go to their usual folder, or beside the destination where only that has
// room.
Plan plan(const Rip& rip, const Place& temporary, const Place& destination);

// The same for this user's folders; without an objection as far as something is not known.
Plan plan(std::optional<qint64> imageBytes, bool thorough, const QString& destination,
          Replacing replacing);

}  // namespace RipRoom
