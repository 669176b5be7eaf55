#include "OpticalDriveMonitor.h"

#include "DriveStatus.h"
#include "Published.h"
#include "ShellCommand.h"

namespace {

std::optional<OpticalDisc> discIn(const QString& report) {
    const auto line = DriveStatus::parseStatus(report);
    if (!line) {
        return std::nullopt;
    }
    const auto volumeName = DriveStatus::volumeName(line->bsdName);
    const bool isAudio = OpticalDisc::isAudioVolume(volumeName);
    const QString source = DriveStatus::imageSourceBSDName(
        line->bsdName, isAudio ? DriveStatus::Audio::Yes : DriveStatus::Audio::No);
    return OpticalDisc{line->bsdName,
                       line->rawType,
                       discKindFromRawType(line->rawType),
                       volumeName,
                       DriveStatus::totalBytes(source),
                       source};
}

}  // namespace

OpticalDriveMonitor::OpticalDriveMonitor(QObject* parent) : QObject(parent) {}

OpticalDriveMonitor::~OpticalDriveMonitor() = default;

void OpticalDriveMonitor::start() {
    poll();
    m_timer = std::make_unique<QTimer>(this);
    m_timer->setTimerType(Qt::PreciseTimer);
    m_timer->setInterval(static_cast<int>(pollInterval * 1000));
    connect(m_timer.get(), &QTimer::timeout, this, &OpticalDriveMonitor::poll);
    m_timer->start();
}

void OpticalDriveMonitor::stop() {
    m_timer.reset();
}

void OpticalDriveMonitor::poll() {
    const auto status =
        ShellCommand::run(QStringLiteral("/usr/bin/drutil"), {QStringLiteral("status")});
    if (status.exitCode != 0) {
        publish(this, m_driveDetected, false, &OpticalDriveMonitor::driveDetectedChanged);
        publish(this, m_disc, std::optional<OpticalDisc>(), &OpticalDriveMonitor::discChanged);
        publish(this, m_lastError,
                std::optional(status.standardError.isEmpty() ? tr("No optical drive found.")
                                                             : status.standardError),
                &OpticalDriveMonitor::lastErrorChanged);
        return;
    }
    publish(this, m_lastError, std::optional<QString>(), &OpticalDriveMonitor::lastErrorChanged);
    publish(this, m_driveDetected, true, &OpticalDriveMonitor::driveDetectedChanged);
    publish(this, m_driveIdentity, DriveStatus::parseDriveIdentity(status.standardOutput),
            &OpticalDriveMonitor::driveIdentityChanged);
    publish(this, m_disc, discIn(status.standardOutput), &OpticalDriveMonitor::discChanged);
}

#include "moc_OpticalDriveMonitor.cpp"
