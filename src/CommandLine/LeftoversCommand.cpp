#include <QFileInfo>
#include <nlohmann/json.hpp>

#include "ByteCount.h"
#include "ErrorText.h"
#include "JsonText.h"
#include "Leftovers.h"
#include "QuickCommands.h"
#include "UserFolders.h"

using Json = nlohmann::ordered_json;

namespace {

void tell(const Leftover& leftover, const CommandContext& context) {
    if (context.invocation.json) {
        context.output.write(JsonText::line(
            Json{{"path", leftover.path.toStdString()},
                 {"bytes", leftover.bytes},
                 {"lastChanged", leftover.lastChanged.toUTC().toString(Qt::ISODate).toStdString()},
                 {"volumeName", JsonText::text(leftover.volumeName)}}));
        return;
    }
    context.output.write(QStringLiteral("%1  %2  %3  %4\n")
                             .arg(leftover.lastChanged.toString(QStringLiteral("yyyy-MM-dd HH:mm")),
                                  ByteCount::format(leftover.bytes).rightJustified(9),
                                  leftover.volumeName.value_or(QStringLiteral("(no name)")),
                                  leftover.path));
}

}  // namespace

int QuickCommands::leftovers(const CommandContext& context) {
    const QString folder = context.invocation.operands.value(0, UserFolders::temporary());
    if (!QFileInfo(folder).isDir()) {
        context.complain(QStringLiteral("The folder “%1” does not exist.").arg(folder));
        return ExitStatus::failed;
    }
    const QList<Leftover> all = Leftovers::in(folder);
    for (const Leftover& leftover : all) {
        tell(leftover, context);
    }
    if (all.isEmpty() && !context.invocation.json) {
        context.output.write(
            QStringLiteral("No failed rip has left anything in “%1”.\n").arg(folder));
    }
    // What could not be named is not removed.
    if (!context.invocation.remove || context.output.failure()) {
        return ExitStatus::done;
    }
    int status = ExitStatus::done;
    for (const Leftover& leftover : all) {
        if (const int error = Leftovers::remove(leftover)) {
            context.complain(QStringLiteral("“%1” could not be removed: %2")
                                 .arg(leftover.path, errorText(error)));
            status = ExitStatus::failed;
        }
    }
    return status;
}
