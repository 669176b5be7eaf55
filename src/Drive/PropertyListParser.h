// The top-level dictionary of an XML property list, as far as the disc tools use it.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <optional>
#include <variant>

namespace PropertyListParser {

// What a value is: a text, an integer, a floating-point number, a list whose elements are all
// texts, or anything else (monostate). An integer that does not fit is anything else.
using Value = std::variant<std::monostate, QString, qint64, double, QStringList>;

// Absent when the text is no well-formed property list, or its top level is no dictionary. Of equal
// keys the last counts.
std::optional<QMap<QString, Value>> parseDictionary(const QString& text);

}  // namespace PropertyListParser
