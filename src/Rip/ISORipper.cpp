#include "ISORipper.h"

#include <QFileInfo>
#include <cerrno>
#include <utility>

#include "ChildProcess.h"
#include "ErrorText.h"
#include "FileRemoval.h"
#include "MainThreadLink.h"
#include "ProcessTree.h"
#include "ProgressLines.h"
#include "Published.h"
#include "StagedCopy.h"
#include "StrictUtf8.h"
#include "ToolRoot.h"
#include "UserFolders.h"
#include "VerifyProcesses.h"

namespace {

constexpr std::chrono::seconds sampleInterval{1};
constexpr double newSpeedShare = 0.3;
constexpr double oldSpeedShare = 0.7;

double seconds(ISORipper::Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

std::optional<qint64> sizeOf(const QString& path) {
    const QFileInfo info(path);
    return info.exists() ? std::optional(info.size()) : std::nullopt;
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
    m_process.reset();
    m_progressTimer.reset();
    m_verification.reset();
    m_destination.reset();
    m_totalBytes.reset();
    m_cancelled = false;
    m_verifyCancelled = false;
    m_cdrPath.reset();
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
                      std::optional<qint64> totalBytes, bool thoroughVerify) {
    reset();
    m_destination = destination;
    m_totalBytes = totalBytes;
    m_cdrPath =
        UserFolders::temporaryImageBase(QStringLiteral("spindrift-")) + QStringLiteral(".cdr");
    m_link = MainThreadLink::to(this);

    const auto rip = std::make_shared<Rip>(Rip{bsdName, destination, thoroughVerify, {}});
    auto process = std::make_shared<ChildProcess>(
        ToolRoot::resolve(QStringLiteral("/usr/bin/hdiutil")),
        QStringList{QStringLiteral("create"), QStringLiteral("-srcdevice"),
                    QStringLiteral("/dev/") + bsdName, QStringLiteral("-format"),
                    QStringLiteral("UDTO"), QStringLiteral("-puppetstrings"), QStringLiteral("-o"),
                    *m_cdrPath});
    process->setStream(ChildProcess::Output::Standard, ChildProcess::Stream::Pipe);
    process->setStream(ChildProcess::Output::Error, ChildProcess::Stream::Pipe);
    process->setChunkHandler(
        ChildProcess::Output::Standard,
        [this, link = m_link, lines = ProgressLines()](const QByteArray& chunk) mutable {
            for (const double progress : lines.append(chunk)) {
                link->post([this, progress] {
                    publish(this, m_progress, progress, &ISORipper::progressChanged);
                });
            }
        });
    process->setChunkHandler(ChildProcess::Output::Error,
                             [rip](const QByteArray& chunk) { rip->errorOutput += chunk; });
    process->setExitHandler([this, link = m_link, rip](int status) {
        link->post([this, rip, status] { toolEnded(rip, status); });
    });

    if (const auto failure = process->launch()) {
        publish(this, m_error, std::optional(RipError::launchFailed(*failure)),
                &ISORipper::errorChanged);
        return;
    }
    m_process = std::move(process);
    publish(this, m_isRunning, true, &ISORipper::isRunningChanged);
    m_ripStartTime = m_lastSampleTime = Clock::now();
    m_lastSampleBytes = 0;
    m_progressTimer = std::make_unique<QTimer>(this);
    m_progressTimer->setInterval(sampleInterval);
    connect(m_progressTimer.get(), &QTimer::timeout, this, [this] { sample(); });
    m_progressTimer->start();
}

double ISORipper::smoothedSpeed(double current, double instant) {
    return current == 0 ? instant : instant * newSpeedShare + current * oldSpeedShare;
}

void ISORipper::sample(Clock::time_point now) {
    const auto size = m_cdrPath ? sizeOf(*m_cdrPath) : std::nullopt;
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
void ISORipper::toolEnded(const std::shared_ptr<Rip>& rip, int status) {
    m_progressTimer.reset();
    if (m_cancelled) {
        publishStopped();
        removeTemporaryImage();
        return;
    }
    if (status != 0 || !m_cdrPath || !QFileInfo::exists(*m_cdrPath)) {
        publishStopped();
        publishToolFailure(*rip, status);
        return;
    }
    const int error = moveFile(*m_cdrPath, rip->destination);
    if (error == EXDEV) {
        m_copy = StagedCopy::begin(*m_cdrPath, rip->destination, [this, link = m_link, rip] {
            link->post([this, rip] { copyEnded(rip); });
        });
        return;
    }
    publishStopped();
    publishMoved(*rip, error);
}

void ISORipper::copyEnded(const std::shared_ptr<Rip>& rip) {
    const std::shared_ptr<StagedCopy> copy = std::exchange(m_copy, nullptr);
    if (m_cancelled) {
        // It may have been whole before it heard of the cancellation.
        copy->discard();
        publishStopped();
        removeTemporaryImage();
        return;
    }
    const int error = copy->commit();
    publishStopped();
    publishMoved(*rip, error);
}

void ISORipper::publishStopped() {
    publish(this, m_isRunning, false, &ISORipper::isRunningChanged);
    publish(this, m_speedBytesPerSecond, 0.0, &ISORipper::speedBytesPerSecondChanged);
}

void ISORipper::publishToolFailure(const Rip& rip, int status) {
    const QString text = strictUtf8(rip.errorOutput).value_or(QString());
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
        publish(this, m_error,
                std::optional(RipError::imagingFailed(
                    tr("Could not move image into place: %1").arg(errorText(moveError)))),
                &ISORipper::errorChanged);
        return;
    }
    if (const auto size = sizeOf(rip.destination)) {
        publish(this, m_bytesWritten, *size, &ISORipper::bytesWrittenChanged);
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

void ISORipper::cancel() {
    m_cancelled = true;
    if (m_copy) {
        m_copy->cancel();
    } else if (m_process) {
        ProcessTree::terminate(*m_process);
    }
    deletePartialOutput();
}

void ISORipper::removeTemporaryImage() {
    if (m_cdrPath) {
        FileRemoval::remove(*m_cdrPath);
    }
}

// Never a folder, whatever it holds: only files are removed.
void ISORipper::deletePartialOutput() {
    if (m_destination) {
        FileRemoval::remove(*m_destination);
    }
}
