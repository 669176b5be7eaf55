// Text from bytes that must be UTF-8 as a whole. Any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <string>

// Absent when any byte does not belong to well-formed UTF-8 (overlong forms, surrogates and a
// character that is cut at the end included). Nothing is dropped: a byte order mark and NUL stay.
std::optional<QString> strictUtf8(const QByteArray& bytes);

// A text of a JSON document; bytes that are no UTF-8 become replacement characters, and nothing is
// dropped. Qt's own conversions would drop a byte order mark.
QString wholeText(const std::string& utf8);
