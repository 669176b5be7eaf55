// The practice drive: a folder that the disc tools treat as a drive, for trying the program without
// hardware.
#pragma once

#include <QString>
#include <optional>

namespace PracticeFolder {

struct Prepared {
    QString folder;  // what SPINDRIFT_PRACTICE_DRIVE was set to
    QString disc;    // the image that is in its tray
};

// Prepares the practice drive under the user's data folder with the given image in its tray (a
// symbolic link; absent: the sample disc), and sets SPINDRIFT_PRACTICE_DRIVE for this process and
// its children. On failure the result is absent and *error says what is wrong, in a sentence.
std::optional<Prepared> prepare(const std::optional<QString>& image, QString* error);

// The sample disc that the build makes; absent when it is not installed.
std::optional<QString> sampleDisc();

}  // namespace PracticeFolder
