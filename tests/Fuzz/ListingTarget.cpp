#include "DriveStatus.h"
#include "FuzzTarget.h"
#include "FuzzText.h"

FUZZ_TARGET(Listing) {
    const QString device = QStringLiteral("sr0");
    const QString listing = FuzzText::of(bytes);
    const auto slice = DriveStatus::parseImageSource(listing, device);
    const bool isNamed = listing.contains(device + QLatin1Char('s'));
    ensure(!slice || isNamed, "a slice is in the listing");
    if (slice) {
        ensure(slice->startsWith(device + QLatin1Char('s')), "a slice begins like its disc");
        ensure(!slice->contains(QLatin1Char(' ')), "a slice is one word");
        ensure(FuzzText::isOneLine(*slice), "a slice is on one line");
    }
}
