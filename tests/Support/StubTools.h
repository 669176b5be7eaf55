// Small shell scripts that stand in for the disc tools, in a test folder's tool root.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "TestFolder.h"

namespace StubTools {

// The paths by which the program names its tools.
inline const QString drutil = QStringLiteral("/usr/bin/drutil");
inline const QString diskutil = QStringLiteral("/usr/sbin/diskutil");

// Writes <tool root>/<fixedPath> as an executable "#!/bin/sh" script with this body. Each run first
// appends its name and its arguments, one line a run, blank-separated, to <tool root>/log.
void write(const TestFolder& folder, const QString& fixedPath, const QByteArray& body);

// Leaves the tool root with no such tool.
void remove(const TestFolder& folder, const QString& fixedPath);

// The lines that the stubs have logged so far, such as "drutil status".
QStringList log(const TestFolder& folder);

}  // namespace StubTools
