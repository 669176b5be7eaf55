// What the targets say of texts.
#pragma once

#include <QByteArray>
#include <QString>
#include <string_view>

#include "StrictUtf8.h"

namespace FuzzText {

inline QByteArray bytesOf(std::string_view bytes) {
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

// As the application takes a tool's output: bytes that are no UTF-8 count as none.
inline QString of(std::string_view bytes) {
    return strictUtf8(bytesOf(bytes)).value_or(QString());
}

inline bool isUtf8(std::string_view bytes) {
    return strictUtf8(bytesOf(bytes)).has_value();
}

inline bool isOneLine(const QString& text) {
    return !text.contains(QLatin1Char('\n'));
}

// Without the blanks and tabs at its ends.
inline QString trimmed(QString text) {
    const auto isBlank = [](QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); };
    while (!text.isEmpty() && isBlank(text.back())) {
        text.chop(1);
    }
    while (!text.isEmpty() && isBlank(text.front())) {
        text.remove(0, 1);
    }
    return text;
}

inline bool isTrimmed(const QString& text) {
    return trimmed(text) == text;
}

}  // namespace FuzzText
