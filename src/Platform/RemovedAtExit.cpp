#include "RemovedAtExit.h"

#include <unistd.h>

#include <QFile>
#include <cstdlib>
#include <mutex>
#include <set>

namespace {

// Never destroyed: background threads may outlive the main thread's end.
struct Held {
    std::mutex mutex;
    std::multiset<QByteArray> paths;

    static Held& instance() {
        static Held* const held = [] {
            std::atexit(RemovedAtExit::removeAll);
            return new Held;
        }();
        return *held;
    }
};

}  // namespace

RemovedAtExit::RemovedAtExit(const QString& path) : m_path(QFile::encodeName(path)) {
    Held& held = Held::instance();
    const std::lock_guard lock(held.mutex);
    held.paths.insert(m_path);
}

RemovedAtExit::~RemovedAtExit() {
    Held& held = Held::instance();
    const std::lock_guard lock(held.mutex);
    held.paths.erase(held.paths.find(m_path));
}

void RemovedAtExit::removeAll() {
    Held& held = Held::instance();
    const std::lock_guard lock(held.mutex);
    for (const QByteArray& path : held.paths) {
        unlink(path.constData());
    }
}
