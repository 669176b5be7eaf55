// The way back from background threads to a model object that they may outlive.
//
// Made by the model on the main thread for one piece of background work (shared, because that work
// keeps it) and cut by the model when it no longer wants to hear of the work: at its end or before
// a new start. Whatever comes after the cut is dropped, also what was already on its way.
#pragma once

#include <QMetaObject>
#include <QObject>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

class MainThreadLink final : public std::enable_shared_from_this<MainThreadLink> {
public:
    static std::shared_ptr<MainThreadLink> to(QObject* model) {
        return std::shared_ptr<MainThreadLink>(new MainThreadLink(model));
    }

    // Main thread; several times.
    void cut() {
        const std::lock_guard lock(m_mutex);
        m_model = nullptr;
    }

    // Any thread; the answer may be out of date at once, except on the main thread.
    bool isCut() const {
        const std::lock_guard lock(m_mutex);
        return m_model == nullptr;
    }

    // Runs the work on the main thread, later and in the order of the calls. Any thread; never
    // blocks. The work is destroyed unrun after a cut.
    void post(std::function<void()> work) {
        const std::lock_guard lock(m_mutex);
        if (!m_model) {
            return;
        }
        QMetaObject::invokeMethod(
            m_model,
            [link = shared_from_this(), run = std::move(work)] {
                if (!link->isCut()) {
                    run();
                }
            },
            Qt::QueuedConnection);
    }

private:
    explicit MainThreadLink(QObject* model) : m_model(model) {}

    mutable std::mutex m_mutex;
    QObject* m_model;  // borrowed; its destructor cuts the link
};
