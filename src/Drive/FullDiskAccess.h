// Whether this user may read raw optical discs.
#pragma once

#include <QStringList>

namespace FullDiskAccess {

// Opens the probe files in their order, read-only and without moving a tray; the first that exists
// and answers decides. Quick, stateless, any thread; every error is folded into false.
bool isGranted();

// The files that isGranted() asks, in order: the two under the home folder, then each optical
// drive's device, then the practice drive's image.
QStringList probeFiles();

// The deciding rule over any list of files; open(path) gives 0 or an error number.
bool decide(const QStringList& files);

}  // namespace FullDiskAccess
