#include "RipSession.h"

#include <QFile>
#include <QFileInfo>
#include <utility>

#include "BackgroundThread.h"
#include "Characters.h"
#include "DiscEjector.h"
#include "MainThreadLink.h"
#include "NotificationManager.h"
#include "OpticalDriveMonitor.h"
#include "RipRoom.h"
#include "SpeedTestResult.h"

namespace {

constexpr std::chrono::milliseconds cancelAgainInterval{200};
constexpr qsizetype longestFileName = 255;  // bytes, on nearly every file system

// As many whole characters from the front as fit into so many bytes of a file name.
QString shortened(const QString& name, qsizetype bytes) {
    QString result;
    for (const QString& character : Characters::of(name)) {
        bytes -= QFile::encodeName(character).size();
        if (bytes < 0) {
            break;
        }
        result += character;
    }
    return result;
}

}  // namespace

RipSession::RipSession(OpticalDriveMonitor& monitor, ISORipper& ripper, Record record,
                       RipChoices choices, QObject* parent)
    : QObject(parent),
      m_monitor(monitor),
      m_ripper(ripper),
      m_record(std::move(record)),
      m_choices(std::move(choices)),
      m_hadError(ripper.error().has_value()),
      m_link(MainThreadLink::to(this)) {
    connect(&ripper, &ISORipper::verifyStatusChanged, this, &RipSession::verifyStatusChanged);
    connect(&ripper, &ISORipper::errorChanged, this, &RipSession::errorChanged);
    connect(&ripper, &ISORipper::lastRipAverageBytesPerSecondChanged, this,
            &RipSession::averageSpeedChanged);
    m_cancelAgain.setInterval(cancelAgainInterval);
    connect(&m_cancelAgain, &QTimer::timeout, this, [this] {
        if (m_ripper.isVerifying()) {
            m_ripper.cancelVerification();
        } else if (!m_ripper.isRunning()) {
            m_cancelAgain.stop();
        }
    });
}

RipSession::~RipSession() {
    m_link->cut();
}

void RipSession::setDestination(const std::optional<QString>& destination) {
    if (m_destination != destination) {
        m_destination = destination;
        Q_EMIT destinationChanged();
    }
}

QString RipSession::defaultFileName(const OpticalDisc& disc) {
    const QString extension = QStringLiteral(".iso");
    QString name = disc.volumeName.value_or(QString());
    // The two that no file name can hold.
    name.replace(QLatin1Char('/'), QLatin1Char('-')).remove(QChar(u'\0'));
    name = shortened(name, longestFileName - extension.size());
    return (name.isEmpty() ? rawValue(disc.kind) : name) + extension;
}

std::optional<QString> RipSession::lackOfRoom() const {
    const auto& disc = m_monitor.disc();
    if (!disc || !m_destination) {
        return std::nullopt;
    }
    return RipRoom::plan(disc->totalBytes, m_choices.thoroughVerify && m_choices.thoroughVerify(),
                         *m_destination, m_choices.replacing)
        .objection;
}

void RipSession::startRip() {
    const auto disc = m_monitor.disc();
    const auto destination = m_destination;
    if (!disc || !destination) {
        return;
    }
    m_cancelAgain.stop();
    m_rippedBSDName = disc->bsdName;
    m_rippedDrive = m_monitor.driveIdentity();
    m_rippedDiscKind = disc->kind;
    m_rippedDiscSize = disc->totalBytes;
    m_ripper.start(disc->imageSourceBSDName, *destination, disc->totalBytes,
                   m_choices.thoroughVerify && m_choices.thoroughVerify(), m_choices.replacing);
}

void RipSession::cancel(ISORipper::CancelRemoves removes) {
    if (m_ripper.isRunning()) {
        m_ripper.cancel(removes);
    } else {
        m_ripper.cancelVerification();
    }
}

void RipSession::cancelUntilNothingIsLeft(ISORipper::CancelRemoves removes) {
    cancel(removes);
    m_cancelAgain.start();
}

void RipSession::ejectDisc(const QString& bsdName) {
    ++m_ejecting;
    const auto report = [this, link = m_link](bool ejected) {
        if (!ejected) {
            NotificationManager::notify(
                tr("Couldn't Eject Disc"),
                tr("The rip finished, but the disc couldn't be ejected automatically. "
                   "You can eject it manually."));
        }
        link->post([this, ejected] {
            --m_ejecting;
            Q_EMIT ejectFinished(ejected);
        });
    };
    if (BackgroundThread::start(BackgroundThread::Priority::Low,
                                [report, bsdName] { report(DiscEjector::eject(bsdName)); }) != 0) {
        report(false);
    }
}

void RipSession::verifyStatusChanged() {
    const auto status = m_ripper.verifyStatus();
    if (!status) {
        return;
    }
    switch (status->kind()) {
        case VerifyStatus::Kind::matched:
            verified();
            break;
        case VerifyStatus::Kind::mismatched:
            NotificationManager::notify(
                tr("Verification Failed"),
                tr("The ISO does not match the disc. The disc was not ejected \u2014 "
                   "you may want to retry."));
            break;
        case VerifyStatus::Kind::failed:
            NotificationManager::notify(tr("Verification Error"), status->text());
            break;
    }
}

void RipSession::verified() {
    NotificationManager::notify(
        tr("Rip Verified"),
        m_destination ? tr("Saved and verified: %1").arg(QFileInfo(*m_destination).fileName())
                      : tr("ISO verified."));
    if (m_rippedBSDName && m_choices.ejectWhenDone && m_choices.ejectWhenDone()) {
        ejectDisc(*m_rippedBSDName);
    }
    setDestination(std::nullopt);
}

void RipSession::errorChanged() {
    const auto error = m_ripper.error();
    const bool hadError = std::exchange(m_hadError, error.has_value());
    if (!error || hadError) {
        return;
    }
    NotificationManager::notify(tr("Rip Failed"), error->errorDescription());
    if (error->kind() == RipError::Kind::permissionDenied) {
        Q_EMIT permissionNeeded();
    }
}

void RipSession::averageSpeedChanged() {
    const auto speed = m_ripper.lastRipAverageBytesPerSecond();
    if (!speed || !m_rippedDrive || !m_rippedDiscKind) {
        return;
    }
    m_record(SpeedTestResult::now(
        m_rippedDrive->driveKey(), m_rippedDrive->modelString(), rawValue(*m_rippedDiscKind),
        m_rippedDiscSize.value_or(m_ripper.bytesWritten()), *speed, SpeedTestResult::Source::rip));
}

#include "moc_RipSession.cpp"
