// One run of the imaging tool, which reads a whole disc into an image file.
//
// Owned by whoever wants the image; start it once, in one of the two ways. Dropping it neither ends
// the tool nor removes the image, but nothing is heard of them any more.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

class ChildProcess;
class MainThreadLink;
class QObject;
class QTimer;

class ImagingTool final {
public:
    // Called on the main thread while this is there. Destroyed, on any thread, once the tool has
    // ended or could not be started.
    struct Handlers {
        std::function<void(double fraction)> progressed;  // 0 to 1, -1: not known
        std::function<void()> sample;                     // every second while the tool runs
        // After all output. The status is ChildProcess's.
        std::function<void(int status, const QByteArray& errorOutput)> ended;
    };
    enum class ErrorOutput { Collected, Dropped };
    // The status with which the tool ends because somebody else reads the disc.
    static constexpr int busyStatus = 75;  // EX_TEMPFAIL

    // Images /dev/<bsdName> to <base>.cdr.
    ImagingTool(const QString& bsdName, const QString& base);
    ~ImagingTool();

    const QString& image() const { return m_image; }
    // In bytes; absent while there is no image.
    std::optional<qint64> imageSize() const;

    // Returns at once: absent when the tool runs, otherwise the error's standard text. Main thread.
    // The model is the object whose events the calls of the handlers are; it must outlive this.
    std::optional<QString> start(QObject* model, const Handlers& handlers, ErrorOutput errorOutput);
    // Ends the tool that start() started, and what that has started. Main thread.
    void terminate();

    // Blocks until the tool has ended; it tells nothing. True when it ended with status 0. Any
    // thread. Once the tool runs, its process is handed out, for a cancellation.
    bool runSilently(const std::function<void(std::shared_ptr<ChildProcess>)>& track);

private:
    std::shared_ptr<ChildProcess> makeProcess(const QStringList& output) const;

    QString m_bsdName;
    QString m_base;
    QString m_image;
    std::shared_ptr<ChildProcess> m_process;  // that start() has started; stays after its end
    std::shared_ptr<MainThreadLink> m_link;   // to the tool that start() has started
    std::unique_ptr<QTimer> m_sampler;        // until its end
};
