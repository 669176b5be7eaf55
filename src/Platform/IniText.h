// Keys without a section of their own ("[General]") in the text of a settings file, in the form
// that QSettings reads and writes. Pure; any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace IniText {

// The last value of the key; absent while there is none.
std::optional<QString> value(const QByteArray& text, const QByteArray& key);

// The text with this value; every other byte is as it was. A value that needs quotes is not for
// this.
QByteArray withValue(QByteArray text, const QByteArray& key, const QByteArray& value);

}  // namespace IniText
