#include "InAppNotifications.h"

InAppNotifications& InAppNotifications::shared() {
    static InAppNotifications notifications;
    return notifications;
}

#include "moc_InAppNotifications.cpp"
