// Collects what a child's handlers are called with. One child each.
#pragma once

#include <QByteArray>
#include <QList>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

#include "ChildProcess.h"

class Recorder final {
    struct Log {
        std::mutex mutex;
        std::condition_variable changed;
        QByteArray output;
        QByteArray error;
        QList<qsizetype> sizes;
        int chunksAfterExit = 0;
        std::optional<int> status;
    };

    template <typename Function>
    auto locked(Function function) const {
        const std::lock_guard lock(m_log->mutex);
        return function(*m_log);
    }

public:
    // Before the launch: both streams become pipes with handlers.
    void follow(ChildProcess& child) {
        for (const auto output : {ChildProcess::Output::Standard, ChildProcess::Output::Error}) {
            child.setStream(output, ChildProcess::Stream::Pipe);
            child.setChunkHandler(output, [log = m_log, output](const QByteArray& chunk) {
                const std::lock_guard lock(log->mutex);
                (output == ChildProcess::Output::Standard ? log->output : log->error) += chunk;
                log->sizes.append(chunk.size());
                log->chunksAfterExit += log->status ? 1 : 0;
                log->changed.notify_all();
            });
        }
        child.setExitHandler([log = m_log](int status) {
            const std::lock_guard lock(log->mutex);
            log->status = status;
            log->changed.notify_all();
        });
    }

    int waitForExit() {
        std::unique_lock lock(m_log->mutex);
        m_log->changed.wait(lock, [this] { return m_log->status.has_value(); });
        return *m_log->status;
    }

    // Everything on standard output once it begins with this much.
    QByteArray waitForOutput(const QByteArray& expected) {
        std::unique_lock lock(m_log->mutex);
        m_log->changed.wait(
            lock, [&] { return m_log->output.size() >= expected.size() || m_log->status; });
        return m_log->output;
    }

    bool hasExited() const {
        return locked([](const Log& log) { return log.status.has_value(); });
    }
    QByteArray output() const {
        return locked([](const Log& log) { return log.output; });
    }
    QByteArray error() const {
        return locked([](const Log& log) { return log.error; });
    }
    QList<qsizetype> chunkSizes() const {
        return locked([](const Log& log) { return log.sizes; });
    }
    int chunksAfterExit() const {
        return locked([](const Log& log) { return log.chunksAfterExit; });
    }
    // Who still holds the log: 1 when only this recorder does.
    long users() const { return m_log.use_count(); }

private:
    std::shared_ptr<Log> m_log = std::make_shared<Log>();
};
