// The manual page and bash's completion, made from their templates and the tables; used while the
// program is built. Pure; any thread.
#pragma once

#include <QString>

// With every "@NAME@" replaced.
QString filledTemplate(QString text);
