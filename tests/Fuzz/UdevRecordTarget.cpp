#include "UdevRecord.h"

#include "DiscType.h"
#include "FuzzTarget.h"
#include "FuzzText.h"
#include "Utf8.h"

FUZZ_TARGET(UdevRecord) {
    const UdevRecord record = UdevRecord::parse(bytes);
    ensure(!record.discType().empty(), "a disc has a type");
    ensure(!(record.isAudioOnly() && record.isMixed()), "a disc is of one kind");
    ensure(!record.hasDisc() || bytes.find("ID_CDROM_MEDIA=1") != std::string_view::npos,
           "a disc stands in the record");
    constexpr std::uint64_t discBytes = 700'000'000;
    const auto data = record.mixedDataBytes(discBytes);
    ensure(!data || (*data > 0 && *data < discBytes), "the data is a part of the disc");
    const std::string label = record.label();
    ensure(FuzzText::isUtf8(label), "a label is UTF-8");
    ensure(Utf8::trimmed(label) == label, "no blanks stand around a label");
    ensure(UdevRecord::decoded(bytes).size() <= bytes.size(), "decoding makes nothing longer");
    std::string encoded;
    for (const char byte : bytes) {
        constexpr const char* digits = "0123456789abcdef";
        const auto value = static_cast<unsigned char>(byte);
        encoded += {'\\', 'x', digits[value >> 4], digits[value & 15]};
    }
    ensure(UdevRecord::decoded(encoded) == bytes, "what was encoded is decoded");
}
