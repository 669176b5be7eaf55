// Tells about a rip while it runs, for people or as JSON.
//
// Owned by the rip command, lives on the main thread. Made before whatever else listens to the
// engine, so that a change is printed before anyone reacts to it.
#pragma once

#include <QObject>
#include <QString>
#include <memory>

#include "TextOutput.h"

class ISORipper;
class OpticalDriveMonitor;

class RipReport : public QObject {
    Q_OBJECT

public:
    // Every published change of the engine in its order, one JSON object a line.
    static std::unique_ptr<RipReport> json(const ISORipper& ripper, TextOutput& output);
    // Sentences and a progress line; the monitor's disc tells how far it is to the end.
    static std::unique_ptr<RipReport> forPeople(const ISORipper& ripper,
                                                const OpticalDriveMonitor& monitor,
                                                TextOutput& output);

    // A sentence that JSON has no place for.
    virtual void say(const QString& sentence) = 0;
    // Nothing is drawn any more.
    virtual void end() = 0;
};
