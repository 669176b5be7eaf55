#include "InAppNotifications.h"

InAppNotifications& InAppNotifications::shared() {
    static InAppNotifications notifications;
    return notifications;
}
