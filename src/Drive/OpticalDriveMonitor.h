// The drive and the disc in it, as last polled.
//
// Owned by one window, lives on the main thread. start() polls once and then every two seconds; a
// poll runs the disc tools and blocks for the few milliseconds they take. Shows no dialogs.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

#include "DriveIdentity.h"
#include "OpticalDisc.h"

class OpticalDriveMonitor final : public QObject {
    Q_OBJECT
    Q_PROPERTY(std::optional<OpticalDisc> disc READ disc NOTIFY discChanged)
    Q_PROPERTY(bool driveDetected READ driveDetected NOTIFY driveDetectedChanged)
    Q_PROPERTY(
        std::optional<DriveIdentity> driveIdentity READ driveIdentity NOTIFY driveIdentityChanged)
    Q_PROPERTY(std::optional<QString> lastError READ lastError NOTIFY lastErrorChanged)

public:
    static constexpr double pollInterval = 2.0;  // seconds

    explicit OpticalDriveMonitor(QObject* parent = nullptr);
    ~OpticalDriveMonitor() override;

    const std::optional<OpticalDisc>& disc() const { return m_disc; }
    bool driveDetected() const { return m_driveDetected; }
    // From the last successful poll; kept when a poll fails.
    const std::optional<DriveIdentity>& driveIdentity() const { return m_driveIdentity; }
    // Why no drive could be queried; absent after a successful poll.
    const std::optional<QString>& lastError() const { return m_lastError; }

    // Polls at once, then every pollInterval seconds.
    void start();
    // Ends the polling; called when the window is closed.
    void stop();
    // One poll, at once.
    void poll();

signals:
    void objectWillChange();
    void discChanged();
    void driveDetectedChanged();
    void driveIdentityChanged();
    void lastErrorChanged();

private:
    std::optional<OpticalDisc> m_disc;
    bool m_driveDetected = false;
    std::optional<DriveIdentity> m_driveIdentity;
    std::optional<QString> m_lastError;
    std::unique_ptr<QTimer> m_timer;
};
