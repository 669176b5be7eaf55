// The images that failed rips have left: all that was read of a disc, and the space of a disc. Asks
// the file systems; any thread.
#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

struct Leftover {
    QString path;
    qint64 bytes;
    QDateTime lastChanged;
    std::optional<QString> volumeName;  // as the image tells it
};

namespace Leftovers {

// Those of this user in a folder, without those of rips that run; newest first.
QList<Leftover> in(const QString& folder);

// What to type in a terminal to see the file among the others of its folder.
QString commandThatLists(const QString& path);

// Removes one for good, unless a rip needs it by now. 0, or the error number.
int remove(const Leftover& leftover);

}  // namespace Leftovers
