#include "ToolRoot.h"

QString ToolRoot::resolve(const QString& fixedPath) { return fixedPath; }
