// A settings file that several processes and people write. Stateless; any thread. Writing waits for
// the disk.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <optional>

namespace SettingsFile {

// The whole of it, empty while there is none; absent, with errno, when it cannot be read.
std::optional<QByteArray> read(const QString& path);

// Sets these keys and leaves everything else as it is in the file now, not as it was read before. A
// symbolic link stays and its target is replaced, in one go: at no time is there half a file. Gives
// 0 or the error number; then the file is as it was.
int update(const QString& path, const QMap<QByteArray, QByteArray>& values);

}  // namespace SettingsFile
