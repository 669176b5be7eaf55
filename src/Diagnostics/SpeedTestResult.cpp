#include "SpeedTestResult.h"

#include <QLatin1String>
#include <QTimeZone>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "JsonReader.h"
#include "StrictUtf8.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr double singleSpeedOfDvd = 1385000;
constexpr double singleSpeedOfBd = 4500000;
constexpr double singleSpeedOfOthers = 150000;

// A lone surrogate has no UTF-8 form; Qt writes a replacement character for it.
std::string utf8(const QString& text) {
    return text.toUtf8().toStdString();
}

std::optional<QString> stringIn(const nlohmann::json& json, const char* key) {
    const auto entry = json.find(key);
    if (entry == json.end() || !entry->is_string()) {
        return std::nullopt;
    }
    return wholeText(entry->get_ref<const std::string&>());
}

bool isDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

bool isHexadecimalDigit(QChar character) {
    const QChar lower = character.toLower();
    return character.unicode() < 128 && (isDigit(lower) || (lower >= u'a' && lower <= u'f'));
}

// Qt alone would also take braces, a missing hyphen's place or a tail.
std::optional<QUuid> parseIdentifier(const QString& text) {
    constexpr qsizetype length = 36;
    if (text.size() != length) {
        return std::nullopt;
    }
    for (qsizetype i = 0; i < length; ++i) {
        const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
        if (hyphen ? text[i] != u'-' : !isHexadecimalDigit(text[i])) {
            return std::nullopt;
        }
    }
    return QUuid::fromString(text);
}

// Qt's own ISO reader would also take fractions, offsets, blanks and 24:00:00.
std::optional<QDateTime> parseDate(const QString& text) {
    static const QString pattern = QStringLiteral("0000-00-00T00:00:00Z");
    if (text.size() != pattern.size()) {
        return std::nullopt;
    }
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == u'0' ? !isDigit(text[i]) : text[i] != pattern[i]) {
            return std::nullopt;
        }
    }
    const auto number = [&](qsizetype from, qsizetype count) {
        return QStringView(text).mid(from, count).toInt();
    };
    const QDate day(number(0, 4), number(5, 2), number(8, 2));
    const QTime time(number(11, 2), number(14, 2), number(17, 2));
    if (!day.isValid() || !time.isValid()) {
        return std::nullopt;
    }
    return QDateTime(day, time, QTimeZone::utc());
}

// What JSON has no form for: such a value would make the whole history unreadable.
bool canBeWritten(const SpeedTestResult& result) {
    const int year = result.date.toUTC().date().year();
    return std::isfinite(result.averageBytesPerSecond) && result.date.isValid() && year > 0 &&
           year <= 9999;
}

// An array of objects; what else than its own keys an object has is passed over.
class HistoryReader final : public JsonReader {
public:
    const QList<SpeedTestResult>& results() const { return m_results; }

private:
    enum Depth { Outside, InArray, InElement };

    bool start_array(std::size_t) override { return m_depth != InArray && begin(); }
    bool end_array() override {
        --m_depth;
        return true;
    }
    bool start_object(std::size_t) override { return m_depth != Outside && begin(); }
    bool end_object() override {
        if (--m_depth != InArray) {
            return true;
        }
        auto result = SpeedTestResult::fromJson(m_element);
        m_element.clear();
        if (result) {
            m_results.append(std::move(*result));
        }
        return result.has_value();
    }
    bool key(string_t& name) override {
        if (m_depth == InElement) {
            m_key = std::move(name);
        }
        return true;
    }
    bool scalar(nlohmann::json value) override {
        if (m_depth == InElement) {
            m_element[m_key] = std::move(value);
        }
        return m_depth >= InElement;
    }
    bool begin() {
        if (m_depth == InElement) {
            m_element[m_key] = nullptr;  // no key of a result holds an array or an object
        }
        ++m_depth;
        return true;
    }

    QList<SpeedTestResult> m_results;
    nlohmann::json m_element = nlohmann::json::object();
    std::string m_key;
    int m_depth = Outside;
};

double singleSpeed(const QString& discKind) {
    if (discKind == QLatin1String("DVD")) {
        return singleSpeedOfDvd;
    }
    return discKind == QLatin1String("BD") ? singleSpeedOfBd : singleSpeedOfOthers;
}

}  // namespace

SpeedTestResult SpeedTestResult::now(const QString& driveKey, const QString& driveModelString,
                                     const QString& discKind, qint64 discSizeBytes,
                                     double averageBytesPerSecond, Source source) {
    return {
        QUuid::createUuid(), QDateTime::currentDateTimeUtc(), driveKey, driveModelString, discKind,
        discSizeBytes,       averageBytesPerSecond,           source};
}

Json SpeedTestResult::toJson() const {
    Json json;
    json["id"] = utf8(id.toString(QUuid::WithoutBraces).toUpper());
    json["date"] = utf8(date.toUTC().toString(u"yyyy-MM-dd'T'HH:mm:ss'Z'"));
    json["driveKey"] = utf8(driveKey);
    json["driveModelString"] = utf8(driveModelString);
    json["discKind"] = utf8(discKind);
    json["discSizeBytes"] = discSizeBytes;
    json["averageBytesPerSecond"] = averageBytesPerSecond;
    json["source"] = utf8(rawValue(source));
    return json;
}

std::optional<SpeedTestResult> SpeedTestResult::fromJson(const nlohmann::json& json) {
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto idText = stringIn(json, "id");
    const auto dateText = stringIn(json, "date");
    const auto key = stringIn(json, "driveKey");
    const auto model = stringIn(json, "driveModelString");
    const auto kind = stringIn(json, "discKind");
    const auto sourceText = stringIn(json, "source");
    const auto size = json.find("discSizeBytes");
    const auto speed = json.find("averageBytesPerSecond");
    if (!idText || !dateText || !key || !model || !kind || !sourceText || size == json.end() ||
        speed == json.end() || !size->is_number_integer() || !speed->is_number()) {
        return std::nullopt;
    }
    // A number too large for the signed type is held unsigned.
    if (size->is_number_unsigned() &&
        size->get<quint64>() > static_cast<quint64>(std::numeric_limits<qint64>::max())) {
        return std::nullopt;
    }
    const auto parsedId = parseIdentifier(*idText);
    const auto parsedDate = parseDate(*dateText);
    const auto parsedSource = sourceFromRawValue(*sourceText);
    if (!parsedId || !parsedDate || !parsedSource) {
        return std::nullopt;
    }
    return SpeedTestResult{*parsedId,           *parsedDate,          *key,         *model, *kind,
                           size->get<qint64>(), speed->get<double>(), *parsedSource};
}

QString rawValue(SpeedTestResult::Source source) {
    return source == SpeedTestResult::Source::rip ? QStringLiteral("Rip")
                                                  : QStringLiteral("Speed Test");
}

std::optional<SpeedTestResult::Source> sourceFromRawValue(const QString& text) {
    for (const auto source : {SpeedTestResult::Source::rip, SpeedTestResult::Source::speedTest}) {
        if (text == rawValue(source)) {
            return source;
        }
    }
    return std::nullopt;
}

std::optional<QByteArray> encodeHistory(const QList<SpeedTestResult>& results) {
    if (!std::all_of(results.cbegin(), results.cend(), canBeWritten)) {
        return std::nullopt;
    }
    Json json = Json::array();
    for (const auto& result : results) {
        json.push_back(result.toJson());
    }
    return QByteArray::fromStdString(json.dump(2));
}

std::optional<QList<SpeedTestResult>> decodeHistory(QIODevice& document) {
    HistoryReader reader;
    return reader.read(document) ? std::optional(reader.results()) : std::nullopt;
}

double speedMultiple(const SpeedTestResult& result) {
    return result.averageBytesPerSecond / singleSpeed(result.discKind);
}

QString speedMultipleText(const SpeedTestResult& result) {
    // Not QString::number(), which rounds 8.25 up.
    std::array<char, 512> text;
    const auto written =
        std::to_chars(text.begin(), text.end(), speedMultiple(result), std::chars_format::fixed, 1);
    return QString::fromLatin1(text.data(), written.ptr - text.data()) + u'x';
}
