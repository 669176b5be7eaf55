// The practice drive: a folder that the disc tools treat as a drive, for trying the program without
// hardware.
//
// A plain value; any thread, but for prepare(). Reads drive.json afresh at every question.
#pragma once

#include <QString>
#include <optional>

struct PracticeFolder {
    QString path;

    // The folder that SPINDRIFT_PRACTICE_DRIVE names; absent when real drives are used.
    static std::optional<PracticeFolder> chosen();

    // Prepares the practice drive under the user's data folder with the given image in its tray (a
    // symbolic link; absent: the sample disc), and sets SPINDRIFT_PRACTICE_DRIVE for this process
    // and its children. On failure the result is absent and *error says what is wrong, in a
    // sentence. Main thread.
    static std::optional<PracticeFolder> prepare(const std::optional<QString>& image,
                                                 QString* error);

    // The sample disc that the build makes; absent when it is not installed.
    static std::optional<QString> sampleDisc();

    // The paths of the image in the tray and of the drive's description; either may be missing.
    QString disc() const;
    QString settings() const;

    // Whether the drive refuses to read its disc; absent when the description is malformed.
    std::optional<bool> deniesAccess() const;
};
