// Asks the system to let this user read optical discs.
//
// Runs the small program grant-disc-access through polkit's pkexec, which asks the user for the
// administrator's password. Main thread; returns at once.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <optional>

namespace DiscAccess {

enum class Outcome {
    Granted,      // the program ended with success
    Declined,     // the user closed the question, or is not allowed to answer it
    Failed,       // the program was started and failed
    Unavailable,  // this system has no pkexec, or the program is not installed
};

// The two files that a request needs, where they are; absent when the request cannot be made.
struct Programs {
    QString pkexec;
    QString granter;
};
std::optional<Programs> programs();

// Starts a request. The handler is called on the main thread, once, unless the context object has
// gone by then; with Unavailable it is called before request() returns.
void request(QObject* context, const std::function<void(Outcome)>& handler);
void request(const std::optional<Programs>& programs, QObject* context,
             const std::function<void(Outcome)>& handler);

}  // namespace DiscAccess
