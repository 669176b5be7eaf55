// Where the command-line tools really are.
//
// The program names every tool by its fixed absolute path ("/usr/bin/drutil"); this turns such a
// path into the file to start. Stateless; callable from any thread.
#pragma once

#include <QString>

namespace ToolRoot {

// The file to start for the tool with this fixed path: under $SPINDRIFT_TOOL_ROOT if that is set
// and holds it; else under the tool root of this installation or build tree
// (<libexecdir>/spindrift, found from the program's folder) if that holds it; else the path itself.
// SPINDRIFT_TOOL_ROOT=/ always gives the path itself.
QString resolve(const QString& fixedPath);

}  // namespace ToolRoot
