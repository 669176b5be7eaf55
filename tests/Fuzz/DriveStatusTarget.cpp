#include <nlohmann/json.hpp>

#include "DriveStatus.h"
#include "FuzzTarget.h"
#include "FuzzText.h"

FUZZ_TARGET(DriveStatus) {
    const auto disc = DriveStatus::parseStatus(FuzzText::of(bytes));
    if (!disc) {
        return;
    }
    ensure(!disc->rawType.isEmpty(), "a disc has a type");
    ensure(disc->rawType.toLower() != QLatin1String("none"), "the type \"none\" is no disc");
    ensure(FuzzText::isTrimmed(disc->rawType), "no blanks stand around a type");
    ensure(!disc->rawType.contains(QLatin1String("Name:")), "a type ends before the name");
    ensure(FuzzText::isOneLine(disc->rawType), "a type is on one line");
    ensure(FuzzText::isOneLine(disc->bsdName), "a device is on one line");
    ensure(bytes.find("/dev/") != std::string_view::npos, "a device's path is in the report");
}
