#include <QFile>

#include "DiagnosticsStore.h"
#include "FuzzFolder.h"
#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "FuzzText.h"

namespace {

const FuzzFolder& dataFolder() {
    static const FuzzFolder folder;
    static const bool isSet = qputenv("XDG_DATA_HOME", QFile::encodeName(folder.path()));
    ensure(isSet, "the environment takes a variable");
    return folder;
}

}  // namespace

// The file, then a nickname and the drive that gets it.
FUZZ_TARGET(Nicknames) {
    const FuzzFolder& folder = dataFolder();
    FuzzInput input(bytes);
    DiagnosticsStore::files();  // makes the folder
    folder.write(QStringLiteral("Spindrift/drivenicknames.json"), FuzzText::bytesOf(input.text()));
    const QString name = FuzzText::of(input.text());
    const QString vendor = FuzzText::of(input.text());
    const DriveIdentity drive{vendor, QStringLiteral("Model"), FuzzText::of(input.text())};
    DiagnosticsStore store;
    const auto before = store.nicknames();
    store.setNickname(name, drive);
    const auto kept = store.nickname(drive);
    ensure(!kept || !kept->isEmpty(), "no nickname is empty");
    ensure(!kept || name.contains(*kept), "a nickname is what was given");
    ensure(DiagnosticsStore().nicknames() == store.nicknames(),
           "nicknames that were written are read as they were");
    store.setNickname(QString(), drive);
    auto others = before;
    others.remove(drive.driveKey());
    ensure(store.nicknames() == others, "the other nicknames stay");
}
