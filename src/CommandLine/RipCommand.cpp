#include "RipCommand.h"

#include <QFileInfo>
#include <QTimer>

#include "BackgroundThread.h"
#include "ByteCount.h"
#include "DiagnosticsStore.h"
#include "FullDiskAccess.h"
#include "Interruption.h"
#include "JsonText.h"
#include "Leftovers.h"
#include "NotificationManager.h"
#include "QuickCommands.h"
#include "RipTarget.h"

namespace {

constexpr int longestNotificationWait = 1000;  // milliseconds
// The verification removes its second image, of up to 100 GB, after it has told its verdict.
constexpr std::chrono::seconds longestTidying{20};

}  // namespace

RipCommand::RipCommand(const CommandContext& context, Interruption& interruption)
    : m_context(context),
      m_interruption(interruption),
      m_report(context.invocation.json ? RipReport::json(m_ripper, context.output)
                                       : RipReport::forPeople(m_ripper, m_monitor, context.output)),
      m_session(m_monitor, m_ripper, &DiagnosticsStore::recordAlone,
                RipChoices{[&context] { return context.invocation.thorough; },
                           [&context] { return context.invocation.eject; },
                           context.invocation.force ? Replacing::Yes : Replacing::No}) {
    const auto look = [this] { exitOnceOver(); };
    connect(&m_ripper, &ISORipper::isRunningChanged, this, look, Qt::QueuedConnection);
    connect(&m_ripper, &ISORipper::isVerifyingChanged, this, look, Qt::QueuedConnection);
    connect(&m_ripper, &ISORipper::errorChanged, this, look, Qt::QueuedConnection);
    connect(&m_ripper, &ISORipper::verifyStatusChanged, this, look, Qt::QueuedConnection);
    connect(&m_session, &RipSession::ejectFinished, this,
            [this](bool ejected) { m_ejectFailed = !ejected; });
    connect(&m_session, &RipSession::ejectFinished, this, look, Qt::QueuedConnection);
    connect(&interruption, &Interruption::interrupted, this,
            [this] { cancel(ISORipper::CancelRemoves::WhatStoodThere); });
    interruption.goBeforeEventsOf(&m_ripper);
}

RipCommand::~RipCommand() = default;

int RipCommand::run() {
    const auto target = RipTarget::absolutePath(m_context.invocation.output);
    if (!target) {
        m_context.complain(
            QStringLiteral("The current folder cannot be found. Name the whole "
                           "path of the file to write."));
        return ExitStatus::failed;
    }
    m_target = *target;
    if (const auto objection = RipTarget::objection(m_target)) {
        m_context.complain(*objection);
        return ExitStatus::failed;
    }
    if (!RipTarget::hasFolder(m_target)) {
        m_context.complain(
            QStringLiteral("The folder “%1” does not exist.").arg(QFileInfo(m_target).path()));
        return ExitStatus::failed;
    }
    if (!m_context.invocation.force && RipTarget::isTaken(m_target)) {
        m_context.complain(
            QStringLiteral("“%1” exists already. Use --force to replace it.").arg(m_target));
        return ExitStatus::failed;
    }
    m_monitor.poll();
    Interruption::begin();
    if (!m_monitor.disc()) {
        m_context.complain(
            m_monitor.lastError().value_or(QStringLiteral("No disc inserted.")).trimmed());
        return ExitStatus::failed;
    }
    m_session.setDestination(m_target);
    const auto lackOfRoom = m_session.lackOfRoom();
    if (lackOfRoom && !m_context.invocation.force) {
        m_context.complain(*lackOfRoom + QStringLiteral(" Or use --force to try it nevertheless."));
        return ExitStatus::failed;
    }

    NotificationManager::requestAuthorization();
    m_report->say(
        QStringLiteral("Ripping “%1” to %2").arg(m_monitor.disc()->displayName(), m_target));
    if (m_monitor.disc()->isAudio()) {
        m_context.complain(OpticalDisc::audioWarning());
    }
    QTimer readerCheck;
    connect(&readerCheck, &QTimer::timeout, this, &RipCommand::cancelWithoutAReader);
    readerCheck.start(TextOutput::readerCheckInterval);
    m_session.startRip();
    const int status = m_loop.exec();
    m_interruption.end();
    m_report->end();
    printOutcome(status);
    NotificationManager::flush(longestNotificationWait);
    if (!m_session.isEjecting()) {
        BackgroundThread::waitForPassing(longestTidying);
    }
    return status;
}

void RipCommand::cancel(ISORipper::CancelRemoves removes) {
    if (outcome()) {
        m_loop.exit(*outcome());  // only the eject is waited for
        return;
    }
    m_cancelled = true;
    m_session.cancelUntilNothingIsLeft(removes);
}

void RipCommand::cancelWithoutAReader() {
    if (m_context.output.readerIsGone() && !m_cancelled) {
        cancel(ISORipper::CancelRemoves::Nothing);
    }
}

void RipCommand::exitOnceOver() {
    if (const auto status = outcome(); status && !m_session.isEjecting()) {
        m_loop.exit(*status);
    }
}

std::optional<int> RipCommand::outcome() const {
    if (m_ripper.isRunning() || m_ripper.isVerifying()) {
        return std::nullopt;
    }
    if (m_ripper.error()) {
        return m_cancelled ? ExitStatus::cancelled : ExitStatus::failed;
    }
    if (const auto& verdict = m_ripper.verifyStatus()) {
        switch (verdict->kind()) {
            case VerifyStatus::Kind::matched:
                return ExitStatus::done;
            case VerifyStatus::Kind::mismatched:
                return ExitStatus::mismatched;
            case VerifyStatus::Kind::failed:
                return ExitStatus::failed;
        }
    }
    return m_cancelled ? std::optional(ExitStatus::cancelled) : std::nullopt;
}

void RipCommand::printRemarks() {
    for (const QString& remark : m_ripper.remarks()) {
        if (m_context.invocation.json) {
            m_context.output.write(
                JsonText::line(JsonText::change("remark", remark.toStdString())));
        } else {
            m_context.complain(remark);
        }
    }
}

void RipCommand::printOutcome(int status) {
    printRemarks();
    if (m_ejectFailed) {
        m_context.complain(QStringLiteral("The rip finished, but the disc couldn't be ejected."));
    }
    // It may take the space of a whole disc, or be all that there is of a disc that is dying.
    const auto left = m_ripper.error() && status != ExitStatus::cancelled
                          ? m_ripper.temporaryImage()
                          : std::nullopt;
    const bool isLeft = left && QFileInfo::exists(*left);
    if (m_context.invocation.json) {
        if (isLeft) {
            m_context.output.write(
                JsonText::line(JsonText::change("temporaryImage", left->toStdString())));
        }
        return;
    }
    if (status == ExitStatus::cancelled) {
        m_context.complain(m_ripper.finished()
                               ? QStringLiteral("Verification cancelled. The image is kept: ") +
                                     m_target
                               : QStringLiteral("Cancelled."));
    } else if (const auto& error = m_ripper.error()) {
        m_context.complain(error->errorDescription().trimmed());
        // The tool may have been denied something else than the disc.
        if (error->kind() == RipError::Kind::permissionDenied && !FullDiskAccess::isGranted()) {
            m_context.errors.write(accessGuidance());
        }
        if (isLeft) {
            m_context.complain(QStringLiteral("What was read is left in “%1”; see “%2”.")
                                   .arg(*left, Leftovers::commandThatLists(*left)));
        }
    } else if (const auto& verdict = m_ripper.verifyStatus()) {
        printVerdict(*verdict);
    }
}

void RipCommand::printVerdict(const VerifyStatus& verdict) {
    switch (verdict.kind()) {
        case VerifyStatus::Kind::matched: {
            QString sentence = m_context.invocation.thorough
                                   ? QStringLiteral("Saved and verified: ")
                                   : QStringLiteral("Saved: ");
            sentence +=
                m_target + QStringLiteral(" (") + ByteCount::format(m_ripper.bytesWritten());
            if (const auto& average = m_ripper.lastRipAverageBytesPerSecond()) {
                sentence += QStringLiteral(" at ") + ByteCount::formatSpeed(*average);
            }
            m_report->say(sentence + QLatin1Char(')'));
            return;
        }
        case VerifyStatus::Kind::mismatched:
            m_context.complain(QStringLiteral(
                "The ISO does not match the disc. The disc was not ejected — you may want to "
                "retry."));
            return;
        case VerifyStatus::Kind::failed:
            m_context.complain(verdict.text());
            return;
    }
}

#include "moc_RipCommand.cpp"
