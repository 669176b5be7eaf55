#include "DriveStatus.h"
#include "FuzzTarget.h"
#include "FuzzText.h"
#include "PropertyListParser.h"

FUZZ_TARGET(PropertyList) {
    using PropertyListParser::Value;
    const QString text = FuzzText::of(bytes);
    const auto dictionary = PropertyListParser::parseDictionary(text);
    const auto name = DriveStatus::parseVolumeName(text);
    const auto size = DriveStatus::parseTotalBytes(text);
    const auto first = DriveStatus::parseFirstVolume(text);
    if (!dictionary) {
        ensure(!name && !size && !first, "no dictionary, no answer");
        return;
    }
    ensure(text.contains(QLatin1String("plist")), "a property list names itself");
    for (auto entry = dictionary->cbegin(); entry != dictionary->cend(); ++entry) {
        ensure(entry.key().isValidUtf16(), "a key is of whole characters");
        if (const auto* value = std::get_if<QString>(&entry.value())) {
            ensure(value->isValidUtf16(), "a text is of whole characters");
        }
    }
    ensure(!name || !name->isEmpty(), "a name is not empty");
    ensure(!first || !first->isEmpty(), "a volume's name is not empty");
    const Value total = dictionary->value(QStringLiteral("TotalSize"));
    if (const auto* bytesOfDisc = std::get_if<qint64>(&total)) {
        ensure(size == *bytesOfDisc, "the total size comes first");
    }
}
