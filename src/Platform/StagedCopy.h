// Copies a finished image to another file system, under a hidden name beside its destination.
//
// Shared by the rip engine (main thread) and the thread that copies. begin(), then, once the
// callback has come, commit() puts the copy in place in one step and removes the original. A copy
// that fails, is cancelled or discarded, or dropped before commit() leaves nothing behind; the
// original stays then. What a killed program leaves goes when the next copy in that folder begins.
#pragma once

#include <QString>
#include <atomic>
#include <functional>
#include <memory>

#include "RemovedAtExit.h"

// Whether a file that stands at the destination gives way, or is an error (EEXIST).
enum class Replacing { Yes, No };

// Puts a file in another's place within one file system, in one step. 0 or the error number: EXDEV
// when the two are on different file systems. A folder is never replaced. The file then has the
// mode that a new one would have.
int moveFile(const QString& source, const QString& destination, Replacing replacing);

class StagedCopy final {
public:
    // Paths of files. Returns at once; the callback comes once, however the copy ended, on the
    // copying thread or (when there can be none) on the calling one.
    // Where a file that is replaced takes the room that the copy needs, it goes first.
    static std::shared_ptr<StagedCopy> begin(const QString& source, const QString& destination,
                                             Replacing replacing,
                                             const std::function<void()>& finished);

    ~StagedCopy();
    StagedCopy(const StagedCopy&) = delete;
    StagedCopy& operator=(const StagedCopy&) = delete;

    // Makes a copy that runs end soon, with ECANCELED; the copying thread removes what it has
    // written before its callback. Never waits. Main thread.
    void cancel();

    // The same, and what has been written is gone at once, for a program that may end at any time.
    // Waits for the file system while it is busy with the copy. Main thread.
    void discard();

    // How much is copied, 0 to 1. Any thread.
    double fraction() const { return m_fraction; }

    // After the callback; main thread. 0, or the error number of what failed; the copy is gone
    // then, unless only the disk did not confirm its name. The original goes only when it did.
    int commit();

private:
    StagedCopy(const QString& source, const QString& destination, Replacing replacing);
    int copy();
    int copyFrom(int input);
    bool makesWay(off_t size) const;
    int copyContent(int input, int output);

    const QString m_source;
    const QString m_destination;
    const Replacing m_replacing;
    const QString m_staging;
    const RemovedAtExit m_removedAtExit;
    std::atomic<bool> m_cancelled = false;
    std::atomic<double> m_fraction = 0;
    int m_error = 0;  // written by the copying thread before the callback
};
