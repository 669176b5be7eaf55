// What goes wrong while history, nicknames and preferences are kept. History and nicknames are kept
// by one plain write: what a failure within it loses is what their rows say.
#include "FaultTable.h"

namespace {

using namespace FaultCells;
using namespace FaultMeanwhile;

constexpr const char* set = "settings ejectWhenDone true";
constexpr const char* name = "nickname Box";
constexpr const char* unname = "nickname ";

std::string unsaved(const std::string& error) {
    return "The settings could not be saved: " + error + '.';
}

const std::string unwritten = "“data/Spindrift/drivenicknames.json” could not be written.";

const std::string onlyOne = "data/.lock data/speedlog.json=1 same/disc.iso=disc";
const std::string both = "data/.lock data/speedlog.json=2 same/disc.iso=disc";
const std::string otherNickname = R"(data/.lock data/drivenicknames.json={"A|B|C":"Other"})";
const std::string bothNicknames =
    R"(data/.lock data/drivenicknames.json={"A|B|C":"Other","MAKER|Drive|1":"Box"})";
const std::string oldPreferences =
    "config/.Spindrift.lock config/Spindrift.conf=[General],thoroughVerify=true";
const std::string newPreferences = oldPreferences + ",ejectWhenDone=true";

const std::vector<FaultCell> storeCells = {
    // The history has one entry.
    {"History", plain, "spindrift-cli open speedlog 1 EIO", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli open speedlog 1 EMFILE", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli open speedlog 2 EIO", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli open speedlog 2 EMFILE", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli open speedlog 2 ENOSPC", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli open speedlog 2 EROFS", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli open speedlog 2 KILL", -1, nothing, onlyOne},
    {"History", plain, "spindrift-cli open data/Spindrift/.lock 1+ EIO", 0, nothing,
     "data/speedlog.json=2 same/disc.iso=disc"},
    {"History", plain, "spindrift-cli open data/Spindrift/.lock 1+ EMFILE", 0, nothing,
     "data/speedlog.json=2 same/disc.iso=disc"},
    {"History", plain, "spindrift-cli flock data/Spindrift/.lock 1 EIO", 0, nothing, both},
    {"History", plain, "spindrift-cli flock data/Spindrift/.lock 1 EINTR", 0, nothing, both},
    {"History", plain, "spindrift-cli flock data/Spindrift/.lock 1 EAGAIN", 0, nothing, both},
    {"History", plain, "spindrift-cli read speedlog 1 EIO", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli fallocate speedlog 1 ENOSPC", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli fallocate speedlog 1 EDQUOT", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli fallocate speedlog 1 EIO", 0, nothing, both},
    {"History", plain, "spindrift-cli write speedlog 1 ENOSPC", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli write speedlog 1 EIO", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli write speedlog 1 EDQUOT", 0, nothing, onlyOne},
    {"History", plain, "spindrift-cli write speedlog 1 EINTR", 0, nothing, both},
    {"History", plain, "spindrift-cli write speedlog 1 SHORT", 0, nothing, both},
    {"History", plain, "spindrift-cli write speedlog 1 KILL", -1, nothing, onlyOne},
    {"History", plain, "spindrift-cli write speedlog 1+ SHORT", 0, nothing, both},
    {"History", plain, "spindrift-cli ftruncate speedlog 1 EIO", 0, nothing, both},
    {"History", plain, "spindrift-cli ftruncate speedlog 1 KILL", -1, nothing, both},
    {"History", plain, "spindrift-cli write speedlog 1 PAUSE", -1, nothing, onlyOne, killed,
     "killed"},
    {"History", plain, "spindrift-cli write speedlog 1 PAUSE", 0, nothing, both, suspended,
     "suspended"},
    {"History", plain, "spindrift-cli write speedlog 1 PAUSE", 130,
     "Cancelled. The drive has not answered yet and may stay busy for a while.", onlyOne,
     interruptedTwice, "interrupted twice"},
    {"History", plain, "spindrift-cli write speedlog 1 PAUSE", 0, nothing, "same/disc.iso=disc",
     dataFolderGone, "data folder gone"},
    // Another drive has a nickname.
    {"Nickname", name, "spindrift-cli open drivenicknames 1 EIO", 0, nothing,
     "data/.lock data/drivenicknames.json={\"MAKER|Drive|1\":\"Box\"}"},
    {"Nickname", name, "spindrift-cli open drivenicknames 2 EIO", 1, unwritten, otherNickname},
    {"Nickname", name, "spindrift-cli open drivenicknames 2 EMFILE", 1, unwritten, otherNickname},
    {"Nickname", name, "spindrift-cli open drivenicknames 2 EROFS", 1, unwritten, otherNickname},
    {"Nickname", name, "spindrift-cli open drivenicknames 2 ENOSPC", 1, unwritten, otherNickname},
    {"Nickname", name, "spindrift-cli open drivenicknames 2 KILL", -1, nothing, otherNickname},
    {"Nickname", name, "spindrift-cli open data/Spindrift/.lock 1+ EIO", 0, nothing,
     "data/drivenicknames.json={\"A|B|C\":\"Other\",\"MAKER|Drive|1\":\"Box\"}"},
    {"Nickname", name, "spindrift-cli flock data/Spindrift/.lock 1 EIO", 0, nothing, bothNicknames},
    {"Nickname", name, "spindrift-cli flock data/Spindrift/.lock 1 EINTR", 0, nothing,
     bothNicknames},
    {"Nickname", name, "spindrift-cli fallocate drivenicknames 1 ENOSPC", 1, unwritten,
     otherNickname},
    {"Nickname", name, "spindrift-cli fallocate drivenicknames 1 EIO", 0, nothing, bothNicknames},
    {"Nickname", name, "spindrift-cli write drivenicknames 1 ENOSPC", 1, unwritten, otherNickname},
    {"Nickname", name, "spindrift-cli write drivenicknames 1 EIO", 1, unwritten, otherNickname},
    {"Nickname", name, "spindrift-cli write drivenicknames 1 EINTR", 0, nothing, bothNicknames},
    {"Nickname", name, "spindrift-cli write drivenicknames 1 SHORT", 0, nothing, bothNicknames},
    {"Nickname", name, "spindrift-cli write drivenicknames 1 KILL", -1, nothing, otherNickname},
    {"Nickname", name, "spindrift-cli ftruncate drivenicknames 1 EIO", 0, nothing, bothNicknames},
    {"Nickname", name, "spindrift-cli ftruncate drivenicknames 1 KILL", -1, nothing, bothNicknames},
    {"Nickname", name, "spindrift-cli read drivenicknames 1 EIO", 0, nothing,
     "data/.lock data/drivenicknames.json={\"MAKER|Drive|1\":\"Box\"}"},
    {"Nickname", name, "drutil write pipe: 1 KILL", 1, "No optical drive found.",
     "data/drivenicknames.json={\"A|B|C\":\"Other\"}"},
    {"Nickname", name, "drutil write pipe: 1 GARBAGE", 1, "The drive does not give its name.",
     "data/drivenicknames.json={\"A|B|C\":\"Other\"}"},
    // This drive has one, too, which is taken away.
    {"NicknameRemoval", unname, "spindrift-cli open drivenicknames 2 EIO", 1, unwritten,
     bothNicknames},
    {"NicknameRemoval", unname, "spindrift-cli write drivenicknames 1 ENOSPC", 1, unwritten,
     bothNicknames},
    {"NicknameRemoval", unname, "spindrift-cli write drivenicknames 1 KILL", -1, nothing,
     bothNicknames},
    {"NicknameRemoval", unname, "spindrift-cli ftruncate drivenicknames 1 EIO", 1, unwritten,
     "data/.lock data/drivenicknames.json=broken"},
    {"NicknameRemoval", unname, "spindrift-cli ftruncate drivenicknames 1 KILL", -1, nothing,
     "data/.lock data/drivenicknames.json=broken"},
    // The preferences are replaced in one go.
    {"FirstPreferences", set, "spindrift-cli mkdir - 1 EACCES", 1, unsaved("Permission denied"),
     nothing},
    {"FirstPreferences", set, "spindrift-cli mkdir - 1 ENOSPC", 1,
     unsaved("No space left on device"), nothing},
    {"Preferences", set, "spindrift-cli open .Spindrift.lock 1 EIO", 1,
     unsaved("Input/output error"), "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"Preferences", set, "spindrift-cli open .Spindrift.lock 1 EMFILE", 1,
     unsaved("Too many open files"), "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"Preferences", set, "spindrift-cli open .Spindrift.lock 1 EROFS", 1,
     unsaved("Read-only file system"), "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"Preferences", set, "spindrift-cli open .Spindrift.lock 1 ENOSPC", 1,
     unsaved("No space left on device"), "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"Preferences", set, "spindrift-cli open .Spindrift.lock 1 KILL", -1, nothing,
     "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"Preferences", set, "spindrift-cli flock .Spindrift.lock 1 EIO", 1,
     unsaved("Input/output error"), oldPreferences},
    {"Preferences", set, "spindrift-cli flock .Spindrift.lock 1 EINTR", 0, nothing, newPreferences},
    {"Preferences", set, "spindrift-cli open Spindrift.conf 1 EIO", 0, nothing, newPreferences},
    {"Preferences", set, "spindrift-cli open Spindrift.conf 1 EMFILE", 0, nothing, newPreferences},
    {"Preferences", set, "spindrift-cli open Spindrift.conf 2 EIO", 0, nothing, newPreferences},
    {"Preferences", set, "spindrift-cli open Spindrift.conf 2 EMFILE", 0, nothing, newPreferences},
    {"Preferences", set, "spindrift-cli open Spindrift.conf 3 EIO", 1,
     unsaved("Input/output error"), oldPreferences},
    {"Preferences", set, "spindrift-cli open Spindrift.conf 3 EMFILE", 1,
     unsaved("Too many open files"), oldPreferences},
    {"Preferences", set, "spindrift-cli read Spindrift.conf 1 EIO", 0, nothing, newPreferences},
    {"Preferences", set, "spindrift-cli read Spindrift.conf 1 EINTR", 0, nothing, newPreferences},
    {"Preferences", set, "spindrift-cli read Spindrift.conf 5 EIO", 1,
     unsaved("Input/output error"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli open Spindrift.conf. 1 ENOSPC", 1,
     unsaved("No space left on device"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli open Spindrift.conf. 1 EDQUOT", 1,
     unsaved("Disk quota exceeded"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli open Spindrift.conf. 1 EIO", 1,
     unsaved("Input/output error"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli open Spindrift.conf. 1 EMFILE", 1,
     unsaved("Too many open files"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli open Spindrift.conf. 1 EROFS", 1,
     unsaved("Read-only file system"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli open Spindrift.conf. 1 KILL", -1, nothing,
     oldPreferences},
    {"NewPreferences", set, "spindrift-cli write Spindrift.conf. 1 ENOSPC", 1,
     unsaved("No space left on device"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli write Spindrift.conf. 1 EDQUOT", 1,
     unsaved("Disk quota exceeded"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli write Spindrift.conf. 1 EIO", 1,
     unsaved("Input/output error"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli write Spindrift.conf. 1 EINTR", 0, nothing,
     newPreferences},
    {"NewPreferences", set, "spindrift-cli write Spindrift.conf. 1 SHORT", 0, nothing,
     newPreferences},
    // The new file has a name that no other program uses; a killed one cannot take it along.
    {"NewPreferences", set, "spindrift-cli write Spindrift.conf. 1 KILL", -1, nothing,
     "config/.Spindrift.lock config/Spindrift.conf.NEW=empty "
     "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"NewPreferences", set, "spindrift-cli write Spindrift.conf. 1 TERM>self", -1, nothing,
     "config/.Spindrift.lock config/Spindrift.conf.NEW=empty "
     "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"NewPreferences", set, "spindrift-cli sync Spindrift.conf. 1 ENOSPC", 1,
     unsaved("No space left on device"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli sync Spindrift.conf. 1 EIO", 1,
     unsaved("Input/output error"), oldPreferences},
    {"NewPreferences", set, "spindrift-cli sync Spindrift.conf. 1 KILL", -1, nothing,
     "config/.Spindrift.lock "
     "config/Spindrift.conf.NEW=[General],thoroughVerify=true,ejectWhenDone=true "
     "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"Preferences", set, "spindrift-cli rename Spindrift.conf 1 ENOSPC", 1,
     unsaved("No space left on device"), oldPreferences},
    {"Preferences", set, "spindrift-cli rename Spindrift.conf 1 EIO", 1,
     unsaved("Input/output error"), oldPreferences},
    {"Preferences", set, "spindrift-cli rename Spindrift.conf 1 EACCES", 1,
     unsaved("Permission denied"), oldPreferences},
    {"Preferences", set, "spindrift-cli rename Spindrift.conf 1 KILL", -1, nothing,
     "config/.Spindrift.lock "
     "config/Spindrift.conf.NEW=[General],thoroughVerify=true,ejectWhenDone=true "
     "config/Spindrift.conf=[General],thoroughVerify=true"},
    {"Preferences", set, "spindrift-cli sync config/Spindrift 2 EIO", 1,
     unsaved("Input/output error"), newPreferences},
    {"Preferences", set, "spindrift-cli sync config/Spindrift 2 EINVAL", 0, nothing,
     newPreferences},
    {"Preferences", set, "spindrift-cli sync config/Spindrift 2 KILL", -1, nothing, newPreferences},
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Stores, FaultTable, testing::ValuesIn(storeCells), faultCellName);
