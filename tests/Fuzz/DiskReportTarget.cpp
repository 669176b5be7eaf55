#include <limits>

#include "DiskReports.h"
#include "DriveStatus.h"
#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "FuzzText.h"
#include "PropertyListParser.h"
#include "PropertyListWriter.h"
#include "Utf8.h"

namespace {

// XML has no place for these two.
QString inXml(QString text) {
    return text.replace(QChar(0xFFFE), QChar::ReplacementCharacter)
        .replace(QChar(0xFFFF), QChar::ReplacementCharacter);
}

void ensureSane(const DiscFacts& disc) {
    const QString name = inXml(FuzzText::of(Utf8::oneLine(disc.volumeName)));
    const QString info = FuzzText::of(DiskReports::info("sr0", disc));
    const QString list = FuzzText::of(DiskReports::list("sr0", disc));
    ensure(DriveStatus::parseVolumeName(info).value_or(QString()) == name, "the name is read");
    ensure(DriveStatus::parseFirstVolume(list).value_or(QString()) == name,
           "the volume's name is read");
    const bool fits = disc.bytes && *disc.bytes <= std::numeric_limits<qint64>::max();
    const auto size = DriveStatus::parseTotalBytes(info);
    ensure(size.has_value() == fits, "a size that fits is read");
    ensure(!size || static_cast<std::uint64_t>(*size) == *disc.bytes, "the size is read");
    const std::string table = DiskReports::table("sr0", disc);
    ensure(FuzzText::isUtf8(table), "a table is UTF-8");
    ensure(FuzzText::of(table).count(QLatin1Char('\n')) == 3, "a table has three lines");
    ensure(!DriveStatus::parseImageSource(FuzzText::of(table), QStringLiteral("sr0")),
           "no name can make a slice");
}

}  // namespace

// The disc's name, its type and its size.
FUZZ_TARGET(DiskReport) {
    FuzzInput input(bytes);
    DiscFacts disc;
    disc.volumeName = input.text();
    disc.type = input.text();
    disc.bytes = static_cast<std::uint64_t>(input.number());
    ensureSane(disc);
    disc.bytes.reset();
    ensureSane(disc);

    // Any text, not only a name's, comes through a property list but for what XML cannot hold.
    PropertyListWriter writer;
    writer.add(disc.volumeName, disc.type);
    const auto dictionary = PropertyListParser::parseDictionary(FuzzText::of(writer.text()));
    ensure(dictionary && dictionary->size() == 1, "what was written is read");
    const auto isHeld = [](QChar c) {
        return c >= QLatin1Char(' ') || c == QLatin1Char('\n') || c == QLatin1Char('\t') ||
               c == QLatin1Char('\r');
    };
    QString expected = inXml(FuzzText::of(Utf8::valid(disc.type)));
    for (QChar& c : expected) {
        c = isHeld(c) ? c : QChar(QChar::ReplacementCharacter);
    }
    ensure(dictionary->first() == PropertyListParser::Value(expected), "a text is read as it was");
}
