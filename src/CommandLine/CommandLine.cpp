#include "CommandLine.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <variant>

#include "CommandArguments.h"
#include "CommandContext.h"
#include "CommandTable.h"
#include "Descriptor.h"
#include "HelpText.h"
#include "Interruption.h"
#include "PracticeFolder.h"
#include "ProcessTree.h"
#include "QuickCommands.h"
#include "RipCommand.h"
#include "SpeedTestCommand.h"
#include "TemporaryImages.h"
#include "TextOutput.h"
#include "WriteAll.h"

namespace {

// A descriptor that the parent left closed would be given to the next file that is opened, and
// what is printed would land in it.
void openClosedDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            [[maybe_unused]] const int opened = ::open("/dev/null", O_RDWR);
        }
    }
}

// By the event loop, its signals and the bus, before anything is done.
constexpr size_t neededDescriptors = 16;

// Qt remarks on a locale that is not UTF-8 and then does the right thing.
void printMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (!message.contains(QLatin1String("UTF-8 locale"))) {
        std::fprintf(stderr, "%s\n",
                     qFormatLogMessage(type, context, message).toLocal8Bit().constData());
    }
}

// Beside the commands' own output: the main thread may be busy with it.
void tellOfAHangingDrive() {
    constexpr QByteArrayView words =
        "spindrift-cli: Cancelled. The drive has not answered yet and may stay busy for a while.\n";
    if (::isatty(STDERR_FILENO) != 0) {
        writeAll(STDERR_FILENO, {"\n", 1});  // below the progress
    }
    writeAll(STDERR_FILENO, words);
}

constexpr Interruption::Ending endingOfCommands = {[](int) { return ExitStatus::cancelled; },
                                                   tellOfAHangingDrive};

int runCommand(const CommandContext& context) {
    switch (context.invocation.command) {
        case Command::Status:
            return QuickCommands::status(context);
        case Command::History:
            return QuickCommands::history(context);
        case Command::Nickname:
            return QuickCommands::nickname(context);
        case Command::Eject:
            return QuickCommands::eject(context);
        case Command::Access:
            return QuickCommands::access(context);
        case Command::Settings:
            return QuickCommands::settings(context);
        case Command::Leftovers:
            return QuickCommands::leftovers(context);
        case Command::Rip: {
            Interruption interruption(endingOfCommands);
            return RipCommand(context, interruption).run();
        }
        case Command::SpeedTest: {
            Interruption interruption(endingOfCommands);
            return SpeedTestCommand(context, interruption).run();
        }
    }
    Q_UNREACHABLE();
}

void complainAbout(const QString& failure, TextOutput& errors) {
    errors.write(
        QStringLiteral("spindrift-cli: The output could not be written: %1\n").arg(failure));
}

int tell(const QString& text, TextOutput& output, TextOutput& errors) {
    output.write(text);
    const auto failure = output.failure();
    if (failure && !output.readerIsGone()) {
        complainAbout(*failure, errors);
        return ExitStatus::failed;
    }
    return ExitStatus::done;
}

int runInvocation(const Invocation& invocation, TextOutput& output, TextOutput& errors) {
    const CommandContext context{invocation, output, errors};
    if (invocation.practice) {
        QString error;
        if (!PracticeFolder::prepare(invocation.practiceImage, &error)) {
            context.complain(error);
            return ExitStatus::failed;
        }
    }
    TemporaryImages::removeAbandoned();
    const int status = runCommand(context);
    const auto failure = output.failure();
    if (failure && !output.readerIsGone()) {
        complainAbout(*failure, errors);
        return status == ExitStatus::done ? ExitStatus::failed : status;
    }
    return status;
}

int tellUsageError(const UsageError& error, TextOutput& errors) {
    QString help = QStringLiteral("--help");
    if (error.command) {
        help.prepend(QLatin1String(CommandTable::row(*error.command).name) + QLatin1Char(' '));
    }
    errors.write(
        QStringLiteral("spindrift-cli: %1\nTry “spindrift-cli %2”.\n").arg(error.message, help));
    return ExitStatus::usage;
}

}  // namespace

int runCommandLine(int argc, char** argv) {
    openClosedDescriptors();
    if (!Descriptor::areFree(neededDescriptors)) {
        std::fprintf(stderr, "spindrift-cli: %s\n", std::strerror(errno));
        return ExitStatus::failed;
    }
    ProcessTree::letToolsWatchThisProcess();
    QByteArrayList arguments;
    for (int index = 1; index < argc; ++index) {
        arguments.append(QByteArray(argv[index]));
    }
    qInstallMessageHandler(printMessage);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Spindrift"));
    QCoreApplication::setOrganizationName(QStringLiteral("Spindrift"));
    QCoreApplication::setApplicationVersion(QStringLiteral(SPINDRIFT_VERSION));

    TextOutput output(STDOUT_FILENO);
    TextOutput errors(STDERR_FILENO);
    const CommandArguments parsed = parseCommandArguments(arguments);
    if (const auto* error = std::get_if<UsageError>(&parsed)) {
        return tellUsageError(*error, errors);
    }
    if (const auto* help = std::get_if<HelpRequest>(&parsed)) {
        return tell(helpText(help->command), output, errors);
    }
    if (std::holds_alternative<VersionRequest>(parsed)) {
        return tell(versionText(), output, errors);
    }
    return runInvocation(std::get<Invocation>(parsed), output, errors);
}
