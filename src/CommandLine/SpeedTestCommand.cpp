#include "SpeedTestCommand.h"

#include <QTimer>
#include <nlohmann/json.hpp>

#include "ByteCount.h"
#include "DiagnosticsStore.h"
#include "Interruption.h"
#include "JsonText.h"

SpeedTestCommand::SpeedTestCommand(const CommandContext& context, Interruption& interruption)
    : m_context(context),
      m_interruption(interruption),
      m_printer(context.output, [this] { return progressState(); }) {
    if (context.invocation.json) {
        printChangesAsJson();
    }
    connect(&m_tester, &SpeedTester::bytesReadChanged, this, [this] {
        const auto milliseconds = static_cast<double>(m_elapsed.elapsed());
        m_bytesPerSecond =
            milliseconds > 0 ? static_cast<double>(m_tester.bytesRead()) * 1000 / milliseconds : 0;
        m_printer.update();
    });
    const auto look = [this] { exitOnceOver(); };
    connect(&m_tester, &SpeedTester::isRunningChanged, this, look, Qt::QueuedConnection);
    connect(&m_tester, &SpeedTester::errorChanged, this, look, Qt::QueuedConnection);
    connect(&interruption, &Interruption::interrupted, this, &SpeedTestCommand::cancel);
    interruption.goBeforeEventsOf(&m_tester);
}

SpeedTestCommand::~SpeedTestCommand() = default;

void SpeedTestCommand::printChangesAsJson() {
    const auto print = [this](const char* property, nlohmann::ordered_json value) {
        m_context.output.write(JsonText::line(JsonText::change(property, std::move(value))));
    };
    connect(&m_tester, &SpeedTester::isRunningChanged, this,
            [this, print] { print("isRunning", m_tester.isRunning()); });
    connect(&m_tester, &SpeedTester::progressChanged, this,
            [this, print] { print("progress", m_tester.progress()); });
    connect(&m_tester, &SpeedTester::bytesReadChanged, this,
            [this, print] { print("bytesRead", m_tester.bytesRead()); });
    connect(&m_tester, &SpeedTester::resultChanged, this,
            [this, print] { print("result", JsonText::speedResult(m_tester.result())); });
    connect(&m_tester, &SpeedTester::errorChanged, this,
            [this, print] { print("error", JsonText::text(m_tester.error())); });
}

int SpeedTestCommand::run() {
    m_monitor.poll();
    Interruption::begin();
    const auto& disc = m_monitor.disc();
    const auto& drive = m_monitor.driveIdentity();
    if (!disc || !drive) {
        m_context.complain(m_monitor.lastError()
                               .value_or(disc ? QStringLiteral("The drive does not give its name.")
                                              : QStringLiteral("No disc inserted."))
                               .trimmed());
        return ExitStatus::failed;
    }
    if (!m_context.invocation.json) {
        m_printer.say(
            QStringLiteral("Reading “%1” in %2").arg(disc->displayName(), drive->modelString()));
        m_printer.start();
    }
    QTimer readerCheck;
    connect(&readerCheck, &QTimer::timeout, this, &SpeedTestCommand::cancelWithoutAReader);
    readerCheck.start(TextOutput::readerCheckInterval);
    m_elapsed.start();
    m_tester.start(disc->imageSourceBSDName, *drive, disc->kind, disc->totalBytes);
    m_loop.exec();
    m_interruption.end();
    m_printer.stop();
    return reportOutcome();
}

void SpeedTestCommand::cancel() {
    m_cancelled = true;
    m_tester.cancel();
}

void SpeedTestCommand::cancelWithoutAReader() {
    if (m_context.output.readerIsGone() && !m_cancelled) {
        cancel();
    }
}

ProgressState SpeedTestCommand::progressState() const {
    const auto& disc = m_monitor.disc();
    return {m_tester.progress(), m_tester.bytesRead(), disc ? disc->totalBytes : std::nullopt,
            m_bytesPerSecond};
}

void SpeedTestCommand::exitOnceOver() {
    // An end without a result or an error is one that was cancelled or took no measurable time.
    if (!m_tester.isRunning()) {
        m_loop.quit();
    }
}

int SpeedTestCommand::reportOutcome() {
    const bool json = m_context.invocation.json;
    if (const auto& result = m_tester.result()) {
        DiagnosticsStore::recordAlone(*result);
        if (!json) {
            m_printer.say(QStringLiteral("%1, %2 (%3)")
                              .arg(ByteCount::formatSpeed(result->averageBytesPerSecond),
                                   speedMultipleText(*result),
                                   ByteCount::format(m_tester.bytesRead())));
        }
        return ExitStatus::done;
    }
    if (m_cancelled) {
        if (!json) {
            m_context.complain(QStringLiteral("Cancelled."));
        }
        return ExitStatus::cancelled;
    }
    if (!json) {
        m_context.complain(m_tester.error().value_or(
            QStringLiteral("The test was too short to measure a speed.")));
        if (const auto reason = m_tester.reason()) {
            m_context.complain(*reason);
        }
    }
    return ExitStatus::failed;
}

#include "moc_SpeedTestCommand.cpp"
