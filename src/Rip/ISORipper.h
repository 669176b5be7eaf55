// The rip engine: images a disc into a temporary file, moves it into place, verifies it.
//
// Owned by one window, lives on the main thread; one rip at a time. It runs the imaging tool and
// follows its progress lines and the growing file. Discarding it ends nothing that it started: a
// running tool goes on, and what comes back is dropped.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "RipError.h"
#include "VerifyStatus.h"

class ChildProcess;

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

    // Images /dev/<bsdName> to the destination (an absolute path). Returns at once.
    void start(const QString& bsdName, const QString& destination, std::optional<qint64> totalBytes,
               bool thoroughVerify);
    // Stops a running rip; removes the temporary image and whatever stands at the destination.
    void cancel();
    // Stops a running verification; the image at the destination is kept.
    void cancelVerification();
    void reset();

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
    bool m_isRunning = false;
    qint64 m_bytesWritten = 0;
    double m_progress = 0;
    double m_speedBytesPerSecond = 0;
    bool m_finished = false;
    std::optional<RipError> m_error;
    bool m_isVerifying = false;
    std::optional<VerifyStatus> m_verifyStatus;
    std::optional<double> m_lastRipAverageBytesPerSecond;
};
