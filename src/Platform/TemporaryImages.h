// The images that the imaging tool makes before they have a place of their own, and those that
// programs have left. Stateless; any thread.
#pragma once

#include <QString>
#include <QStringList>

#include "UserFolders.h"

namespace TemporaryImages {

enum class Purpose { Rip, Verification, SpeedTest };

// Path of a new one without its extension, which the tool adds.
QString freshBase(Purpose purpose, const QString& folder = UserFolders::temporary());

// Removes from a folder what ended verifications and speed tests of this user have left, after an
// hour; never the image of a rip.
void removeAbandoned(const QString& folder = UserFolders::temporary());

// What failed rips of this user have left in a folder, newest first.
QStringList leftByRips(const QString& folder = UserFolders::temporary());

}  // namespace TemporaryImages
