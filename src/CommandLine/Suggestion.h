// What somebody who mistyped a name may have meant. Pure; any thread.
#pragma once

#include <QString>
#include <QStringList>

// " Did you mean “json”?" with the nearest of the names, whatever the case; empty when none is
// near. The prefix stands before the name.
QString suggestion(const QString& text, const QStringList& names,
                   const QString& prefix = QString());
