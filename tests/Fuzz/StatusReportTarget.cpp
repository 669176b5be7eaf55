#include "StatusReport.h"

#include "DriveStatus.h"
#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "FuzzText.h"
#include "Utf8.h"

namespace {

// As the report shows a drive's text, but for a colon that it may mask.
QString shown(const std::string& text, std::size_t width) {
    QString column;
    for (const char c : text.substr(0, width)) {
        column += QLatin1Char(c < ' ' || c > '~' || c == ':' ? ' ' : c);
    }
    return column.trimmed();
}

QString withoutColons(QString text) {
    return text.replace(QLatin1Char(':'), QLatin1Char(' ')).trimmed();
}

}  // namespace

// What the drive says of itself, and the disc's type; without one the tray is empty.
FUZZ_TARGET(StatusReport) {
    FuzzInput input(bytes);
    DriveFacts drive;
    drive.node = "sr0";
    drive.vendor = input.text();
    drive.product = input.text();
    drive.revision = input.text();
    std::string type = input.text();
    std::erase(type, ':');
    if (!type.empty()) {
        drive.disc = DiscFacts{};
        drive.disc->type = type;
    }
    const std::string report = StatusReport::text(drive);
    ensure(FuzzText::isUtf8(report), "a report is UTF-8");
    const QString text = FuzzText::of(report);
    ensure(text.count(QLatin1Char('\n')) == 4, "a report has four lines");

    const auto disc = DriveStatus::parseStatus(text);
    ensure(drive.disc || !disc, "no drive can pretend that there is a disc");
    ensure(!disc || disc->bsdName == QLatin1String("sr0"), "no drive can name another device");
    const QString wanted = FuzzText::trimmed(FuzzText::of(Utf8::oneLine(type)));
    ensure(!disc || disc->rawType == wanted, "the type is what the drive says");
    const bool isType = !wanted.isEmpty() && wanted.toLower() != QLatin1String("none");
    ensure(disc.has_value() == isType, "a disc of a type is seen");

    const auto identity = DriveStatus::parseDriveIdentity(text);
    ensure(identity || shown(drive.vendor, 8).isEmpty(), "a drive with a vendor is seen");
    if (identity) {
        ensure(withoutColons(identity->vendor) == shown(drive.vendor, 8), "the vendor is seen");
        ensure(withoutColons(identity->product) == shown(drive.product, 16), "the model is seen");
        ensure(withoutColons(identity->revision) == shown(drive.revision, 4),
               "the revision is seen");
    }
}
