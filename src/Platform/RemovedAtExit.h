// A file that this program takes along when it ends.
//
// Held by whoever has the file made, until the file is to stay or has another name. Dropping it
// removes nothing. Any thread.
#pragma once

#include <QByteArray>
#include <QString>

class RemovedAtExit final {
public:
    explicit RemovedAtExit(const QString& path);
    ~RemovedAtExit();
    RemovedAtExit(const RemovedAtExit&) = delete;
    RemovedAtExit& operator=(const RemovedAtExit&) = delete;

    // Removes the files that are held now; for ends of the program that do not go through exit(),
    // which does the same.
    static void removeAll();

private:
    const QByteArray m_path;
};
