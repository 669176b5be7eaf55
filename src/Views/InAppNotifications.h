// Announcements from one part of the program to the others, without a payload.
//
// One for the whole process, made on first use; main thread.
#pragma once

#include <QObject>

class InAppNotifications final : public QObject {
    Q_OBJECT

public:
    static InAppNotifications& shared();

signals:
    // Show the first-run guide; the front main window does.
    void showOnboarding();
};
