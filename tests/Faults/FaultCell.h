// One row of the tables: where which call goes wrong, and what then is true.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "FaultMeanwhile.h"
#include "FaultWorld.h"

struct FaultCell {
    const char* phase;
    const char* words;  // of the command line; see FaultWorld::run()
    std::string rule;   // see FaultInjection.cpp; "OTHER" in it is the other file system's folder
    int status;
    std::string says;  // standard error
    std::string left;  // every file that there is then
    // While a call pauses.
    void (*meanwhile)(FaultWorld&, CliProgram&) = nullptr;
    const char* name = "";  // of what happens meanwhile

    friend void PrintTo(const FaultCell& cell, std::ostream* stream) {
        *stream << cell.words << ": " << cell.rule << ' ' << cell.name;
    }
};

// What many rows have in common.
namespace FaultCells {

// The command lines.
inline constexpr const char* plain = "rip -o SAME";
inline constexpr const char* forced = "rip --force -o SAME";
inline constexpr const char* toOther = "rip -o OTHER";
inline constexpr const char* forcedToOther = "rip --force -o OTHER";
inline constexpr const char* thorough = "rip --thorough -o SAME";
inline constexpr const char* ejecting = "rip --eject -o SAME";
inline constexpr const char* speedTest = "speed-test";

// What is said.
inline std::string rip(const std::string& text) {
    return "hdiutil exited with an error: " + text;
}
inline std::string imaging(const std::string& text) {
    return rip("hdiutil: create failed - " + text);
}
inline std::string image(const std::string& text) {
    return imaging("tmp/ID.cdr: " + text);
}
inline std::string move(const std::string& text) {
    return rip("Could not move image into place: " + text);
}
inline std::string launch(const std::string& text) {
    return "Could not start rip: " + text;
}
inline std::string keeping(const std::string& text) {
    return text + "\nWhat was read is left in “tmp/ID.cdr”; see “spindrift-cli leftovers”.";
}

inline const std::string unread = "Could not re-read the disc to verify.";

// What is left, or said.
inline const std::string nothing;
inline const std::string recorded = "data/.lock data/speedlog.json=1";
inline const std::string saved = "data/.lock data/speedlog.json=1 same/disc.iso=disc";
inline const std::string savedThere = "data/.lock data/speedlog.json=1 other/disc.iso=disc";
inline const std::string wholeKept = "tmp/ID.cdr=disc";
inline const std::string wholeKeptBesideOld = "other/disc.iso=old tmp/ID.cdr=disc";
inline const std::string partKept = "tmp/ID.cdr=part";
inline const std::string emptyKept = "tmp/ID.cdr=empty";

}  // namespace FaultCells
