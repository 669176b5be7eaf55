// The rip engine: images a disc into a temporary file, moves it into place, verifies it.
//
// Owned by one window, lives on the main thread; one rip at a time. It runs the imaging tool and
// follows its progress lines and the growing file. Discarding it ends nothing that it started: a
// running tool goes on, and what comes back is dropped.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <chrono>
#include <memory>
#include <optional>

#include "FileRemoval.h"
#include "RemovedAtExit.h"
#include "RipError.h"
#include "StagedCopy.h"
#include "VerifyStatus.h"

class ImagingTool;
class MainThreadLink;
class VerifyProcesses;

class ISORipper final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    Q_PROPERTY(qint64 bytesWritten READ bytesWritten NOTIFY bytesWrittenChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(
        double speedBytesPerSecond READ speedBytesPerSecond NOTIFY speedBytesPerSecondChanged)
    Q_PROPERTY(bool finished READ finished NOTIFY finishedChanged)
    Q_PROPERTY(std::optional<RipError> error READ error NOTIFY errorChanged)
    Q_PROPERTY(bool isVerifying READ isVerifying NOTIFY isVerifyingChanged)
    Q_PROPERTY(
        std::optional<VerifyStatus> verifyStatus READ verifyStatus NOTIFY verifyStatusChanged)
    Q_PROPERTY(std::optional<double> lastRipAverageBytesPerSecond READ lastRipAverageBytesPerSecond
                   NOTIFY lastRipAverageBytesPerSecondChanged)

public:
    using Clock = std::chrono::steady_clock;

    explicit ISORipper(QObject* parent = nullptr);
    ~ISORipper() override;

    bool isRunning() const { return m_isRunning; }
    qint64 bytesWritten() const { return m_bytesWritten; }
    double progress() const { return m_progress; }  // 0 to 1, -1: not known
    double speedBytesPerSecond() const { return m_speedBytesPerSecond; }
    bool finished() const { return m_finished; }
    const std::optional<RipError>& error() const { return m_error; }
    bool isVerifying() const { return m_isVerifying; }
    const std::optional<VerifyStatus>& verifyStatus() const { return m_verifyStatus; }
    const std::optional<double>& lastRipAverageBytesPerSecond() const {
        return m_lastRipAverageBytesPerSecond;
    }

    // Path of the last rip's temporary image, which stays after a failure; absent before the first
    // rip. There may be no file.
    std::optional<QString> temporaryImage() const;

    // What the tool had to say about a disc that it has read to its end, a sentence each; empty
    // until the image is in place.
    const QStringList& remarks() const { return m_remarks; }
    // Whether the image has been read and is on its way to another file system. Announced by
    // objectWillChange.
    bool isCopying() const { return m_copy != nullptr; }
    // How much of it has got there, 0 to 1; 0 while nothing is copied.
    double copiedFraction() const;

    // What else a cancellation takes than the temporary image: whatever is at the destination, the
    // file that stood there at the start and still does, or nothing.
    enum class CancelRemoves { Destination, WhatStoodThere, Nothing };

    // Images /dev/<bsdName> to the destination (an absolute path). Returns at once. The temporary
    // image is made beside the destination where only that has room for it.
    void start(const QString& bsdName, const QString& destination, std::optional<qint64> totalBytes,
               bool thoroughVerify, Replacing replacing = Replacing::Yes);
    // Stops a running rip.
    void cancel(CancelRemoves removes = CancelRemoves::Destination);
    // Stops a running verification; the image at the destination is kept.
    void cancelVerification();
    void reset();

    // What the timer does every second of a rip, at this moment; public so that tests need not
    // wait for it.
    void sample(Clock::time_point now = Clock::now());
    // How many processes the current verification has started so far, for tests: one that has just
    // come to life may not be within a cancellation's reach yet.
    size_t trackedVerifyProcesses() const;
    // The speed to show after a sample, in bytes per second.
    static double smoothedSpeed(double current, double instant);

signals:
    void objectWillChange();
    void isRunningChanged();
    void bytesWrittenChanged();
    void progressChanged();
    void speedBytesPerSecondChanged();
    void finishedChanged();
    void errorChanged();
    void isVerifyingChanged();
    void verifyStatusChanged();
    void lastRipAverageBytesPerSecondChanged();

private:
    // What the end of the imaging tool needs to know of the rip it ends.
    struct Rip {
        QString bsdName;
        QString destination;
        bool thoroughVerify;
        Replacing replacing;
    };

    void toolEnded(const Rip& rip, int status, const QByteArray& errorOutput);
    void copyEnded(const Rip& rip);
    void publishStopped();
    void publishToolFailure(int status, const QByteArray& errorOutput);
    void publishMoved(const Rip& rip, int moveError);
    void removeTemporaryImage();
    void deletePartialOutput();
    void deleteWhatStoodThere();
    void startVerification(const QString& bsdName, bool thorough);
    void verificationEnded(const VerifyStatus& verdict);

    bool m_isRunning = false;
    qint64 m_bytesWritten = 0;
    double m_progress = 0;
    double m_speedBytesPerSecond = 0;
    bool m_finished = false;
    std::optional<RipError> m_error;
    bool m_isVerifying = false;
    std::optional<VerifyStatus> m_verifyStatus;
    std::optional<double> m_lastRipAverageBytesPerSecond;

    std::unique_ptr<ImagingTool> m_tool;           // stays after its end, until the next reset
    std::optional<RemovedAtExit> m_removedAtExit;  // the image of a rip that runs
    std::optional<QString> m_destination;
    [[maybe_unused]] std::optional<qint64> m_totalBytes;  // kept with the rip
    QString m_temporaryFolder;                            // of both temporary images
    std::optional<FileRemoval::Identity> m_stoodThere;    // at the destination, at the start
    QStringList m_remarks;
    bool m_cancelled = false;
    bool m_verifyCancelled = false;
    std::optional<Clock::time_point> m_lastSampleTime;
    qint64 m_lastSampleBytes = 0;
    std::optional<Clock::time_point> m_ripStartTime;
    std::shared_ptr<StagedCopy> m_copy;               // while the image is copied into place
    std::shared_ptr<VerifyProcesses> m_verification;  // what the verification has started
    std::shared_ptr<MainThreadLink> m_link;  // to what the current rip has started, a new one each
};
