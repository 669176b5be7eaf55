#include "Waiting.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

bool waitUntil(const std::function<bool()>& condition, int limitMilliseconds) {
    const QDeadlineTimer deadline(limitMilliseconds);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QEventLoop loop;
        QTimer::singleShot(5, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}
