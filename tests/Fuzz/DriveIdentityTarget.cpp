#include <nlohmann/json.hpp>

#include "DriveIdentity.h"
#include "DriveStatus.h"
#include "FuzzTarget.h"
#include "FuzzText.h"

FUZZ_TARGET(DriveIdentity) {
    const auto drive = DriveStatus::parseDriveIdentity(FuzzText::of(bytes));
    if (!drive) {
        return;
    }
    ensure(!drive->vendor.isEmpty(), "a drive has a vendor");
    for (const QString& text : {drive->vendor, drive->product, drive->revision}) {
        ensure(FuzzText::isOneLine(text), "a drive's text is on one line");
        ensure(FuzzText::isTrimmed(text), "no blanks stand around a drive's text");
        ensure(text.isValidUtf16(), "no character of a drive's text is cut");
        ensure(drive->modelString().contains(text), "the model names the text");
    }
    ensure(DriveIdentity::fromJson(drive->toJson()) == drive, "JSON keeps an identity");
}
