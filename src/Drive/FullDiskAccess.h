// Whether this user may read raw optical discs.
//
// Stateless, quick, any thread: a few existence checks and open/close pairs.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace FullDiskAccess {

// Opens the probe files in their order, read-only and without moving a tray; the first that exists
// and answers decides. Every error is folded into false.
bool isGranted();

// The files that isGranted() asks, in order: the two under the home folder, then the devices of the
// optical drives, or only the one that $SPINDRIFT_DRIVE names. With a practice drive the image in
// its tray, or the folder while the tray is empty, stands in for the devices, because the tools do
// not look at them then.
QStringList probeFiles();

// 0 when the file could be opened (it is closed at once), otherwise the error number. A practice
// drive answers EACCES while it denies access, and EINVAL while its description is malformed.
int tryToOpen(const QString& path);

// The deciding rule over any list of files.
using Open = std::function<int(const QString& path)>;
bool decide(const QStringList& files, const Open& open = tryToOpen);

}  // namespace FullDiskAccess
