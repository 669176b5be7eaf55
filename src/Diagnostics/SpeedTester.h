// Measures how fast the drive reads: images the whole disc into a throw-away file.
//
// Owned by the diagnostics window, lives on the main thread. A discarded tester leaves its tool
// running and drops what comes back, except that the throw-away file still goes.
#pragma once

#include <QObject>
#include <QString>
#include <chrono>
#include <memory>
#include <optional>

#include "DriveIdentity.h"
#include "OpticalDisc.h"
#include "SpeedTestResult.h"

class ImagingTool;

class SpeedTester final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(qint64 bytesRead READ bytesRead NOTIFY bytesReadChanged)
    Q_PROPERTY(std::optional<SpeedTestResult> result READ result NOTIFY resultChanged)
    Q_PROPERTY(std::optional<QString> error READ error NOTIFY errorChanged)

public:
    explicit SpeedTester(QObject* parent = nullptr);
    ~SpeedTester() override;

    bool isRunning() const { return m_isRunning; }
    double progress() const { return m_progress; }  // 0 to 1, -1: not known
    qint64 bytesRead() const { return m_bytesRead; }
    const std::optional<SpeedTestResult>& result() const { return m_result; }
    const std::optional<QString>& error() const { return m_error; }
    // What to say of the error beside its text, as a sentence; absent when there is no more to say.
    std::optional<QString> reason() const;

    // Reads /dev/<bsdName> to its end. Call only while isRunning() is false.
    void start(const QString& bsdName, const DriveIdentity& drive, DiscKind discKind,
               std::optional<qint64> discSizeBytes);
    // Ends the test without a result or an error.
    void cancel();

    // What the timer does every second of a test; public so that tests need not wait for it.
    void sample();

    // Bytes per second of a whole test; absent when no time has passed.
    static std::optional<double> averageSpeed(qint64 bytes, double seconds);

signals:
    void objectWillChange();
    void isRunningChanged();
    void progressChanged();
    void bytesReadChanged();
    void resultChanged();
    void errorChanged();

private:
    // What the result says of the disc and the drive, as it was at the start.
    struct Subject {
        DriveIdentity drive;
        DiscKind discKind;
        std::optional<qint64> discSizeBytes;
    };

    void reset();
    void toolEnded(const Subject& subject, int status);
    void publishOutcome(const Subject& subject, int status);

    bool m_isRunning = false;
    double m_progress = 0;
    qint64 m_bytesRead = 0;
    std::optional<SpeedTestResult> m_result;
    std::optional<QString> m_error;

    std::unique_ptr<ImagingTool> m_tool;
    std::optional<std::chrono::steady_clock::time_point> m_startTime;
    bool m_cancelled = false;
    bool m_isRefused = false;  // because somebody else reads the disc
};
