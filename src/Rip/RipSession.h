// What surrounds a rip: the destination, what was ripped from where, and what happens at its end.
//
// The window and the command line both drive rips through this object, so that both react alike:
// notifications, the automatic eject, the entry in the history of speeds. Main thread. Borrows its
// models, which must outlive it.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

#include "DriveIdentity.h"
#include "ISORipper.h"
#include "OpticalDisc.h"

class MainThreadLink;
class OpticalDriveMonitor;
struct SpeedTestResult;

// What the user has chosen, asked at the moment it matters: thoroughVerify when a rip starts,
// ejectWhenDone when it has been verified.
struct RipChoices {
    std::function<bool()> thoroughVerify;
    std::function<bool()> ejectWhenDone;
    // Whether a file that stands at the destination at the end of a rip gives way.
    Replacing replacing = Replacing::Yes;
};

class RipSession final : public QObject {
    Q_OBJECT
    Q_PROPERTY(std::optional<QString> destination READ destination WRITE setDestination NOTIFY
                   destinationChanged)

public:
    // Puts the speed of a rip into the history.
    using Record = std::function<void(const SpeedTestResult&)>;

    RipSession(OpticalDriveMonitor& monitor, ISORipper& ripper, Record record, RipChoices choices,
               QObject* parent = nullptr);
    ~RipSession() override;

    // Absolute path of the next image; cleared once a rip has been verified.
    const std::optional<QString>& destination() const { return m_destination; }
    void setDestination(const std::optional<QString>& destination);

    // The name that a save dialog offers for this disc: "<volume name or kind>.iso", "/" as "-";
    // cut to what a file name can hold.
    static QString defaultFileName(const OpticalDisc& disc);

    // Why the rip of the monitor's disc to the destination will not fit, and what to do, as a
    // sentence; absent when it fits or that is not known.
    std::optional<QString> lackOfRoom() const;

    // Starts a rip of the monitor's disc; nothing without a disc or a destination.
    void startRip();
    // Cancels whatever runs: the rip, else the verification. A process that the verification starts
    // after that runs to its end.
    void cancel(ISORipper::CancelRemoves removes = ISORipper::CancelRemoves::Destination);
    // Cancels whatever runs, and again and again what the verification still starts, for a program
    // or a window that ends.
    void cancelUntilNothingIsLeft(
        ISORipper::CancelRemoves removes = ISORipper::CancelRemoves::Destination);
    // Ejects in the background; a failure is told by a notification and ejectFinished.
    void ejectDisc(const QString& bsdName);
    // True while an eject runs.
    bool isEjecting() const { return m_ejecting > 0; }

signals:
    void destinationChanged();
    // The rip failed for lack of permission: show how to get it.
    void permissionNeeded();
    void ejectFinished(bool ejected);

private:
    void verifyStatusChanged();
    void verified();
    void errorChanged();
    void averageSpeedChanged();

    OpticalDriveMonitor& m_monitor;
    ISORipper& m_ripper;
    Record m_record;
    RipChoices m_choices;
    std::optional<QString> m_destination;
    std::optional<QString> m_rippedBSDName;
    std::optional<DriveIdentity> m_rippedDrive;
    std::optional<DiscKind> m_rippedDiscKind;
    std::optional<qint64> m_rippedDiscSize;
    int m_ejecting = 0;
    bool m_hadError;
    QTimer m_cancelAgain;
    std::shared_ptr<MainThreadLink> m_link;  // to the ejects on their way
};
