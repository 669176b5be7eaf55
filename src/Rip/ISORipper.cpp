#include "ISORipper.h"

#include <QFileInfo>
#include <cerrno>
#include <utility>

#include "ErrorText.h"
#include "ImagingTool.h"
#include "MainThreadLink.h"
#include "Published.h"
#include "Remarks.h"
#include "RipRoom.h"
#include "StrictUtf8.h"
#include "TemporaryImages.h"
#include "VerifyProcesses.h"

namespace {

constexpr double newSpeedShare = 0.3;
constexpr double oldSpeedShare = 0.7;

double seconds(ISORipper::Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

ISORipper::ISORipper(QObject* parent) : QObject(parent) {}

ISORipper::~ISORipper() {
    if (m_link) {
        m_link->cut();
    }
    if (m_copy) {
        m_copy->discard();
    }
}

void ISORipper::reset() {
    if (m_link) {
        m_link->cut();
        m_link.reset();
    }
    if (m_copy) {
        m_copy->discard();
        m_copy.reset();
    }
    m_tool.reset();
    m_removedAtExit.reset();
    m_verification.reset();
    m_destination.reset();
    m_totalBytes.reset();
    m_stoodThere.reset();
    m_remarks.clear();
    m_cancelled = false;
    m_verifyCancelled = false;
    m_lastSampleTime.reset();
    m_lastSampleBytes = 0;
    m_ripStartTime.reset();
    publish(this, m_isRunning, false, &ISORipper::isRunningChanged);
    publish(this, m_bytesWritten, qint64(0), &ISORipper::bytesWrittenChanged);
    publish(this, m_progress, 0.0, &ISORipper::progressChanged);
    publish(this, m_speedBytesPerSecond, 0.0, &ISORipper::speedBytesPerSecondChanged);
    publish(this, m_finished, false, &ISORipper::finishedChanged);
    publish(this, m_error, std::optional<RipError>(), &ISORipper::errorChanged);
    publish(this, m_isVerifying, false, &ISORipper::isVerifyingChanged);
    publish(this, m_verifyStatus, std::optional<VerifyStatus>(), &ISORipper::verifyStatusChanged);
    publish(this, m_lastRipAverageBytesPerSecond, std::optional<double>(),
            &ISORipper::lastRipAverageBytesPerSecondChanged);
}

void ISORipper::start(const QString& bsdName, const QString& destination,
                      std::optional<qint64> totalBytes, bool thoroughVerify, Replacing replacing) {
    reset();
    m_destination = destination;
    m_totalBytes = totalBytes;
    m_temporaryFolder =
        RipRoom::plan(totalBytes, thoroughVerify, destination, replacing).temporaryFolder;
    TemporaryImages::removeAbandoned(m_temporaryFolder);
    m_stoodThere = FileRemoval::identityOf(destination);
    m_link = MainThreadLink::to(this);
    m_tool = std::make_unique<ImagingTool>(
        bsdName, TemporaryImages::freshBase(TemporaryImages::Purpose::Rip, m_temporaryFolder));
    ImagingTool::Handlers handlers;
    handlers.progressed = [this](double fraction) {
        publish(this, m_progress, fraction, &ISORipper::progressChanged);
    };
    handlers.sample = [this] { sample(); };
    handlers.ended = [this, rip = Rip{bsdName, destination, thoroughVerify, replacing}](
                         int status, const QByteArray& errors) { toolEnded(rip, status, errors); };
    if (const auto failure = m_tool->start(this, handlers, ImagingTool::ErrorOutput::Collected)) {
        publish(this, m_error, std::optional(RipError::launchFailed(*failure)),
                &ISORipper::errorChanged);
        return;
    }
    m_removedAtExit.emplace(m_tool->image());
    publish(this, m_isRunning, true, &ISORipper::isRunningChanged);
    m_ripStartTime = m_lastSampleTime = Clock::now();
    m_lastSampleBytes = 0;
}

std::optional<QString> ISORipper::temporaryImage() const {
    return m_tool ? std::optional(m_tool->image()) : std::nullopt;
}

double ISORipper::smoothedSpeed(double current, double instant) {
    return current == 0 ? instant : instant * newSpeedShare + current * oldSpeedShare;
}

void ISORipper::sample(Clock::time_point now) {
    const auto size = m_tool ? m_tool->imageSize() : std::nullopt;
    if (!size) {
        return;
    }
    if (m_lastSampleTime && now > *m_lastSampleTime) {
        const double instant =
            static_cast<double>(*size - m_lastSampleBytes) / seconds(now - *m_lastSampleTime);
        publish(this, m_speedBytesPerSecond, smoothedSpeed(m_speedBytesPerSecond, instant),
                &ISORipper::speedBytesPerSecondChanged);
    }
    m_lastSampleTime = now;
    m_lastSampleBytes = *size;
    publish(this, m_bytesWritten, *size, &ISORipper::bytesWrittenChanged);
}

// Nothing is published before the image is in place, so that all of it comes together at the end of
// a copy as well.
void ISORipper::toolEnded(const Rip& rip, int status, const QByteArray& errorOutput) {
    if (m_cancelled) {
        removeTemporaryImage();
        publishStopped();
        return;
    }
    if (status != 0 || !QFileInfo::exists(m_tool->image())) {
        publishStopped();
        publishToolFailure(status, errorOutput);
        return;
    }
    m_remarks = remarksIn(errorOutput);
    const int error = moveFile(m_tool->image(), rip.destination, rip.replacing);
    if (error == EXDEV) {
        m_copy = StagedCopy::begin(
            m_tool->image(), rip.destination, rip.replacing,
            [this, link = m_link, rip] { link->post([this, rip] { copyEnded(rip); }); });
        Q_EMIT objectWillChange();
        return;
    }
    publishStopped();
    publishMoved(rip, error);
}

void ISORipper::copyEnded(const Rip& rip) {
    const std::shared_ptr<StagedCopy> copy = std::exchange(m_copy, nullptr);
    if (m_cancelled) {
        // It may have been whole before it heard of the cancellation.
        copy->discard();
        removeTemporaryImage();
        publishStopped();
        return;
    }
    const int error = copy->commit();
    publishStopped();
    publishMoved(rip, error);
}

void ISORipper::publishStopped() {
    m_removedAtExit.reset();
    publish(this, m_isRunning, false, &ISORipper::isRunningChanged);
    publish(this, m_speedBytesPerSecond, 0.0, &ISORipper::speedBytesPerSecondChanged);
}

void ISORipper::publishToolFailure(int status, const QByteArray& errorOutput) {
    const QString text = strictUtf8(errorOutput).value_or(QString());
    RipError error = RipError::imagingFailed(text);
    if (text.toLower().contains(QLatin1String("permission denied"))) {
        error = RipError::permissionDenied();
    } else if (text.isEmpty()) {
        error = RipError::imagingFailed(QStringLiteral("exit code %1").arg(status));
    }
    publish(this, m_error, std::optional(error), &ISORipper::errorChanged);
}

void ISORipper::publishMoved(const Rip& rip, int moveError) {
    if (moveError != 0) {
        m_remarks.clear();
        publish(this, m_error,
                std::optional(RipError::imagingFailed(
                    tr("Could not move image into place: %1").arg(errorText(moveError)))),
                &ISORipper::errorChanged);
        return;
    }
    if (const QFileInfo image(rip.destination); image.exists()) {
        publish(this, m_bytesWritten, image.size(), &ISORipper::bytesWrittenChanged);
    }
    publish(this, m_progress, 1.0, &ISORipper::progressChanged);
    publish(this, m_finished, true, &ISORipper::finishedChanged);
    const auto now = Clock::now();
    if (m_ripStartTime && now > *m_ripStartTime) {
        publish(this, m_lastRipAverageBytesPerSecond,
                std::optional(static_cast<double>(m_bytesWritten) / seconds(now - *m_ripStartTime)),
                &ISORipper::lastRipAverageBytesPerSecondChanged);
    }
    startVerification(rip.bsdName, rip.thoroughVerify);
}

double ISORipper::copiedFraction() const {
    return m_copy ? m_copy->fraction() : 0;
}

void ISORipper::cancel(CancelRemoves removes) {
    m_cancelled = true;
    if (m_copy) {
        m_copy->cancel();
    } else if (m_tool) {
        m_tool->terminate();
    }
    if (removes == CancelRemoves::Destination) {
        deletePartialOutput();
    } else if (removes == CancelRemoves::WhatStoodThere) {
        deleteWhatStoodThere();
    }
}

void ISORipper::removeTemporaryImage() {
    if (m_tool) {
        FileRemoval::remove(m_tool->image());
    }
}

// Never a folder, whatever it holds: only files are removed.
void ISORipper::deletePartialOutput() {
    if (m_destination) {
        FileRemoval::moveToTrash(*m_destination);
    }
}

// Somebody else may have put another file there meanwhile.
void ISORipper::deleteWhatStoodThere() {
    if (m_stoodThere && FileRemoval::identityOf(*m_destination) == m_stoodThere) {
        deletePartialOutput();
    }
}

#include "moc_ISORipper.cpp"
