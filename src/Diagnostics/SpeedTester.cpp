#include "SpeedTester.h"

#include "FileRemoval.h"
#include "ImagingTool.h"
#include "Published.h"
#include "RemovedAtExit.h"
#include "TemporaryImages.h"

namespace {

// Goes when nobody needs it any more: at the end of its test, and at the end of the tool when the
// tester did not live to see it, or of the program.
class ThrowAwayFile final {
public:
    explicit ThrowAwayFile(const QString& path) : m_path(path), m_removedAtExit(path) {}
    ~ThrowAwayFile() { FileRemoval::remove(m_path); }
    ThrowAwayFile(const ThrowAwayFile&) = delete;
    ThrowAwayFile& operator=(const ThrowAwayFile&) = delete;

private:
    QString m_path;
    RemovedAtExit m_removedAtExit;
};

}  // namespace

SpeedTester::SpeedTester(QObject* parent) : QObject(parent) {}

SpeedTester::~SpeedTester() = default;

void SpeedTester::reset() {
    m_tool.reset();
    publish(this, m_progress, 0.0, &SpeedTester::progressChanged);
    publish(this, m_bytesRead, qint64(0), &SpeedTester::bytesReadChanged);
    publish(this, m_result, std::optional<SpeedTestResult>(), &SpeedTester::resultChanged);
    publish(this, m_error, std::optional<QString>(), &SpeedTester::errorChanged);
    m_cancelled = false;
    m_isRefused = false;
    m_startTime.reset();
}

void SpeedTester::start(const QString& bsdName, const DriveIdentity& drive, DiscKind discKind,
                        std::optional<qint64> discSizeBytes) {
    reset();
    m_tool = std::make_unique<ImagingTool>(
        bsdName, TemporaryImages::freshBase(TemporaryImages::Purpose::SpeedTest));
    ImagingTool::Handlers handlers;
    handlers.progressed = [this](double fraction) {
        publish(this, m_progress, fraction, &SpeedTester::progressChanged);
    };
    handlers.sample = [this] { sample(); };
    handlers.ended = [this, subject = Subject{drive, discKind, discSizeBytes},
                      file = std::make_shared<ThrowAwayFile>(m_tool->image())](
                         int status, const QByteArray&) { toolEnded(subject, status); };
    if (const auto failure = m_tool->start(this, handlers, ImagingTool::ErrorOutput::Dropped)) {
        publish(this, m_error, std::optional(tr("Could not start speed test: %1").arg(*failure)),
                &SpeedTester::errorChanged);
        return;
    }
    m_startTime = std::chrono::steady_clock::now();
    publish(this, m_isRunning, true, &SpeedTester::isRunningChanged);
}

void SpeedTester::cancel() {
    m_cancelled = true;
    if (m_tool) {
        m_tool->terminate();
    }
}

void SpeedTester::sample() {
    if (const auto size = m_tool ? m_tool->imageSize() : std::nullopt) {
        publish(this, m_bytesRead, *size, &SpeedTester::bytesReadChanged);
    }
}

void SpeedTester::toolEnded(const Subject& subject, int status) {
    const QString image = m_tool->image();
    publish(this, m_isRunning, false, &SpeedTester::isRunningChanged);
    if (!m_cancelled) {
        publishOutcome(subject, status);
    }
    FileRemoval::remove(image);
}

void SpeedTester::publishOutcome(const Subject& subject, int status) {
    const auto size = status == 0 ? m_tool->imageSize() : std::nullopt;
    if (!size || !m_startTime) {
        m_isRefused = status == ImagingTool::busyStatus;
        publish(this, m_error, std::optional(tr("Speed test failed (exit code %1).").arg(status)),
                &SpeedTester::errorChanged);
        return;
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - *m_startTime;
    const auto speed = averageSpeed(*size, elapsed.count());
    if (!speed) {
        return;
    }
    publish(this, m_bytesRead, *size, &SpeedTester::bytesReadChanged);
    publish(this, m_result,
            std::optional(SpeedTestResult::now(
                subject.drive.driveKey(), subject.drive.modelString(), rawValue(subject.discKind),
                subject.discSizeBytes.value_or(*size), *speed, SpeedTestResult::Source::speedTest)),
            &SpeedTester::resultChanged);
}

std::optional<QString> SpeedTester::reason() const {
    return m_isRefused ? std::optional(tr("Another program is reading the disc. Try again when it "
                                          "has finished."))
                       : std::nullopt;
}

std::optional<double> SpeedTester::averageSpeed(qint64 bytes, double seconds) {
    return seconds > 0 ? std::optional(static_cast<double>(bytes) / seconds) : std::nullopt;
}

#include "moc_SpeedTester.cpp"
