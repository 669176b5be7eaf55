// Runs a small external tool to its end and hands back everything it printed.
//
// Stateless; any thread, several at once; blocks its caller. Only for tools whose output is small:
// the pipes are read after the exit, standard output first, so a tool that fills a pipe would
// block.
#pragma once

#include <QString>
#include <QStringList>

namespace ShellCommand {

struct Result {
    QString standardOutput;  // empty when the tool's bytes are not UTF-8
    QString standardError;   // likewise, on its own
    int exitCode = 0;        // -1: could not be started, and standardError says why

    bool operator==(const Result&) const = default;
};

// The executable is a fixed absolute path such as "/usr/bin/drutil"; the arguments reach the tool
// unchanged, with no shell in between. variables: "NAME=value", in place of the inherited ones.
Result run(const QString& executable, const QStringList& arguments,
           const QStringList& variables = {});

}  // namespace ShellCommand
