#include "PropertyListParser.h"

#include <QXmlStreamReader>

namespace {

using PropertyListParser::Value;

Value readInteger(QXmlStreamReader& reader) {
    const QString text = reader.readElementText().trimmed();
    bool isNumber = false;
    const bool isHexadecimal = text.contains(QLatin1Char('x'), Qt::CaseInsensitive);
    const qint64 number = text.toLongLong(&isNumber, isHexadecimal ? 16 : 10);
    return isNumber ? Value(number) : Value();
}

Value readReal(QXmlStreamReader& reader) {
    bool isNumber = false;
    const double number = reader.readElementText().trimmed().toDouble(&isNumber);
    return isNumber ? Value(number) : Value();
}

Value readArray(QXmlStreamReader& reader) {
    QStringList texts;
    bool onlyTexts = true;
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("string")) {
            texts << reader.readElementText();
        } else {
            onlyTexts = false;
            reader.skipCurrentElement();
        }
    }
    return onlyTexts ? Value(texts) : Value();
}

Value readValue(QXmlStreamReader& reader) {
    if (reader.name() == QLatin1String("string")) {
        return reader.readElementText();
    }
    if (reader.name() == QLatin1String("integer")) {
        return readInteger(reader);
    }
    if (reader.name() == QLatin1String("real")) {
        return readReal(reader);
    }
    if (reader.name() == QLatin1String("array")) {
        return readArray(reader);
    }
    reader.skipCurrentElement();
    return {};
}

}  // namespace

std::optional<QMap<QString, Value>> PropertyListParser::parseDictionary(const QString& text) {
    // Blank lines above it are no reason to refuse a document that has its declaration below them.
    QXmlStreamReader reader(text.trimmed());
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("plist") ||
        !reader.readNextStartElement() || reader.name() != QLatin1String("dict")) {
        return std::nullopt;
    }
    QMap<QString, Value> dictionary;
    while (reader.readNextStartElement()) {
        if (reader.name() != QLatin1String("key")) {
            return std::nullopt;
        }
        const QString key = reader.readElementText();
        if (!reader.readNextStartElement() || reader.name() == QLatin1String("key")) {
            return std::nullopt;
        }
        dictionary[key] = readValue(reader);
    }
    if (reader.readNextStartElement()) {
        return std::nullopt;
    }
    while (!reader.atEnd()) {
        reader.readNext();
    }
    return reader.hasError() ? std::nullopt : std::optional(dictionary);
}
