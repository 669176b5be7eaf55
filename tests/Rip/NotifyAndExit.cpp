// Posts one notification, gives it the time in milliseconds that the argument says, and ends.
#include <QCoreApplication>

#include "NotificationManager.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    NotificationManager::requestAuthorization();
    NotificationManager::notify(QStringLiteral("Rip Verified"), QStringLiteral("ISO verified."));
    NotificationManager::flush(QCoreApplication::arguments().value(1).toInt());
    return 0;
}
