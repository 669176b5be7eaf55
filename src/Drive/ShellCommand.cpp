#include "ShellCommand.h"

#include "ChildProcess.h"
#include "StrictUtf8.h"
#include "ToolRoot.h"

ShellCommand::Result ShellCommand::run(const QString& executable, const QStringList& arguments,
                                       const QStringList& variables) {
    using Output = ChildProcess::Output;
    ChildProcess child(ToolRoot::resolve(executable), arguments);
    child.setVariables(variables);
    child.setStream(Output::Standard, ChildProcess::Stream::Pipe);
    child.setStream(Output::Error, ChildProcess::Stream::Pipe);
    if (const auto error = child.launch()) {
        return {QString(),
                QStringLiteral("Failed to launch ") + executable + QStringLiteral(": ") + *error,
                -1};
    }
    Result result;
    result.exitCode = child.wait();
    result.standardOutput = strictUtf8(child.readToEnd(Output::Standard)).value_or(QString());
    result.standardError = strictUtf8(child.readToEnd(Output::Error)).value_or(QString());
    return result;
}
