#include "SpeedTester.h"

#include <QFile>
#include <QFileInfo>

#include "ChildProcess.h"
#include "FileRemoval.h"
#include "MainThreadLink.h"
#include "ProcessTree.h"
#include "ProgressLines.h"
#include "Published.h"
#include "ToolRoot.h"
#include "UserFolders.h"

namespace {

constexpr std::chrono::seconds sampleInterval{1};

// Goes when nobody needs it any more: at the end of its test, and at the end of the tool when the
// tester did not live to see it.
class ThrowAwayFile final {
public:
    explicit ThrowAwayFile(QString path) : m_path(std::move(path)) {}
    ~ThrowAwayFile() { FileRemoval::remove(m_path); }
    ThrowAwayFile(const ThrowAwayFile&) = delete;
    ThrowAwayFile& operator=(const ThrowAwayFile&) = delete;

private:
    QString m_path;
};

std::optional<qint64> sizeOf(const QString& path) {
    const QFileInfo info(path);
    return info.exists() ? std::optional(info.size()) : std::nullopt;
}

}  // namespace

SpeedTester::SpeedTester(QObject* parent) : QObject(parent) {}

SpeedTester::~SpeedTester() {
    if (m_link) {
        m_link->cut();
    }
}

void SpeedTester::reset() {
    if (m_link) {
        m_link->cut();
        m_link.reset();
    }
    m_process.reset();
    m_progressTimer.reset();
    publish(this, m_progress, 0.0, &SpeedTester::progressChanged);
    publish(this, m_bytesRead, qint64(0), &SpeedTester::bytesReadChanged);
    publish(this, m_result, std::optional<SpeedTestResult>(), &SpeedTester::resultChanged);
    publish(this, m_error, std::optional<QString>(), &SpeedTester::errorChanged);
    m_cancelled = false;
    m_startTime.reset();
    m_tempPath.reset();
}

void SpeedTester::start(const QString& bsdName, const DriveIdentity& drive, DiscKind discKind,
                        std::optional<qint64> discSizeBytes) {
    reset();
    const QString tempPath =
        UserFolders::temporaryImageBase(QStringLiteral("spindrift-speedtest-")) +
        QStringLiteral(".cdr");
    m_tempPath = tempPath;
    m_link = MainThreadLink::to(this);

    auto process = std::make_shared<ChildProcess>(
        ToolRoot::resolve(QStringLiteral("/usr/bin/hdiutil")),
        QStringList{QStringLiteral("create"), QStringLiteral("-srcdevice"),
                    QStringLiteral("/dev/") + bsdName, QStringLiteral("-format"),
                    QStringLiteral("UDTO"), QStringLiteral("-puppetstrings"), QStringLiteral("-o"),
                    tempPath});
    process->setStream(ChildProcess::Output::Standard, ChildProcess::Stream::Pipe);
    process->setStream(ChildProcess::Output::Error, ChildProcess::Stream::Null);
    process->setChunkHandler(
        ChildProcess::Output::Standard,
        [this, link = m_link, lines = ProgressLines()](const QByteArray& chunk) mutable {
            for (const double progress : lines.append(chunk)) {
                link->post([this, progress] {
                    publish(this, m_progress, progress, &SpeedTester::progressChanged);
                });
            }
        });
    process->setExitHandler([this, link = m_link, subject = Subject{drive, discKind, discSizeBytes},
                             file = std::make_shared<ThrowAwayFile>(tempPath)](int status) {
        link->post([this, subject, file, status] { toolEnded(subject, status); });
    });

    if (const auto failure = process->launch()) {
        publish(this, m_error, std::optional(tr("Could not start speed test: %1").arg(*failure)),
                &SpeedTester::errorChanged);
        return;
    }
    m_process = std::move(process);
    m_startTime = std::chrono::steady_clock::now();
    publish(this, m_isRunning, true, &SpeedTester::isRunningChanged);
    m_progressTimer = std::make_unique<QTimer>(this);
    m_progressTimer->setInterval(sampleInterval);
    connect(m_progressTimer.get(), &QTimer::timeout, this, &SpeedTester::sample);
    m_progressTimer->start();
}

void SpeedTester::cancel() {
    m_cancelled = true;
    if (m_process) {
        ProcessTree::terminate(*m_process);
    }
}

void SpeedTester::sample() {
    if (!m_tempPath) {
        return;
    }
    if (const auto size = sizeOf(*m_tempPath)) {
        publish(this, m_bytesRead, *size, &SpeedTester::bytesReadChanged);
    }
}

void SpeedTester::toolEnded(const Subject& subject, int status) {
    m_progressTimer->stop();
    publish(this, m_isRunning, false, &SpeedTester::isRunningChanged);
    if (!m_cancelled) {
        publishOutcome(subject, status);
    }
    if (m_tempPath) {
        FileRemoval::remove(*m_tempPath);
    }
}

void SpeedTester::publishOutcome(const Subject& subject, int status) {
    const auto size = status == 0 && m_tempPath ? sizeOf(*m_tempPath) : std::nullopt;
    if (!size || !m_startTime) {
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

std::optional<double> SpeedTester::averageSpeed(qint64 bytes, double seconds) {
    return seconds > 0 ? std::optional(static_cast<double>(bytes) / seconds) : std::nullopt;
}
