#include <QFile>
#include <algorithm>
#include <cmath>

#include "FuzzFolder.h"
#include "FuzzTarget.h"
#include "FuzzText.h"
#include "PracticeDrive.h"
#include "PracticeFolder.h"

namespace {

bool isPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

void ensureSane(const PracticeDrive& drive) {
    ensure(isPrintable(drive.vendor) && isPrintable(drive.product) && isPrintable(drive.revision),
           "a drive's own texts are printable");
    for (const PracticeFault& fault : drive.faults) {
        ensure(fault.count >= 1 && fault.times >= 1, "a fault is at least once, of one sector");
        ensure(fault.lba + fault.count > fault.lba, "a fault ends after its beginning");
        ensure(std::isfinite(fault.seconds) && fault.seconds >= 0, "a fault takes its time");
    }
    ensure(drive.disc.has_value(), "the disc is in the tray");
    ensure(!drive.disc->type.empty(), "a disc has a type");
    ensure(FuzzText::isUtf8(drive.disc->volumeName.value_or("")), "a name is UTF-8");
    ensure(drive.disc->volumeName.value_or("").find('\n') == std::string::npos,
           "a name is on one line");
}

}  // namespace

FUZZ_TARGET(PracticeSettings) {
    static const FuzzFolder folder;
    folder.write(QStringLiteral("disc.iso"), "disc");
    folder.write(QStringLiteral("drive.json"), FuzzText::bytesOf(bytes));
    const auto drive = PracticeDrive::read(QFile::encodeName(folder.path()).toStdString());
    const auto denies = PracticeFolder{folder.path()}.deniesAccess();
    if (drive) {
        ensureSane(*drive);
        ensure(denies == drive->denyAccess, "tools and program agree about the permission");
        return;
    }
    const std::string& sentence = drive.failure().sentence;
    ensure(!sentence.empty(), "a failure has a sentence");
    ensure(sentence.find('\n') == std::string::npos, "a failure's sentence is one line");
    ensure(FuzzText::isUtf8(sentence), "a failure's sentence is UTF-8");
}
