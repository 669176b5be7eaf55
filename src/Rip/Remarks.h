// What the imaging tool has to say though it has succeeded. Pure; any thread.
#pragma once

#include <QByteArray>
#include <QStringList>

// The lines of its error output that are not blank, without the tool's name in front.
QStringList remarksIn(const QByteArray& errorOutput);
