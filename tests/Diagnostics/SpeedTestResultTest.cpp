#include "SpeedTestResult.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QTimeZone>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;
using Source = SpeedTestResult::Source;

SpeedTestResult example() {
    return {QUuid(QStringLiteral("{0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d}")),
            QDateTime(QDate(2025, 1, 31), QTime(18, 4, 59), QTimeZone::utc()),
            QStringLiteral("HL-DT-ST|DVDRAM GP65NB60|RF01"),
            QStringLiteral("HL-DT-ST DVDRAM GP65NB60 RF01"),
            QStringLiteral("DVD"),
            4700372992,
            11080000,
            Source::speedTest};
}

std::optional<QList<SpeedTestResult>> decodeHistory(QByteArray document) {
    QBuffer buffer(&document);
    buffer.open(QIODevice::ReadOnly);
    return ::decodeHistory(buffer);
}

Json exampleJson() {
    return example().toJson();
}

// The example's JSON with one value replaced, read back.
std::optional<SpeedTestResult> withValue(const char* key, const Json& value) {
    Json json = exampleJson();
    json[key] = value;
    return SpeedTestResult::fromJson(json);
}

std::optional<SpeedTestResult> withText(const char* key, const char* text) {
    return withValue(key, Json(text));
}

std::string text(const Json& json, const char* key) {
    return json.at(key).get<std::string>();
}

QStringList keysOf(const Json& json) {
    QStringList keys;
    for (const auto& entry : json.items()) {
        keys.append(QString::fromStdString(entry.key()));
    }
    return keys;
}

TEST(SpeedTestResultTest, SourcesHaveTheirTexts) {
    EXPECT_EQ(rawValue(Source::rip), QStringLiteral("Rip"));
    EXPECT_EQ(rawValue(Source::speedTest), QStringLiteral("Speed Test"));
    EXPECT_EQ(sourceFromRawValue(QStringLiteral("Rip")), Source::rip);
    EXPECT_EQ(sourceFromRawValue(QStringLiteral("Speed Test")), Source::speedTest);
}

TEST(SpeedTestResultTest, SourcesAreMatchedExactly) {
    for (const char* other : {"", "rip", "RIP", "speed test", "SpeedTest", "Speed Test ", " Rip"}) {
        EXPECT_EQ(sourceFromRawValue(QString::fromLatin1(other)), std::nullopt) << other;
    }
}

TEST(SpeedTestResultTest, ANewResultHasAFreshIdentifierAndTheCurrentDate) {
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const auto make = [] {
        return SpeedTestResult::now(QStringLiteral("a|b|c"), QStringLiteral("a b c"),
                                    QStringLiteral("CD"), 7, 1.5, Source::rip);
    };
    const auto first = make();
    const auto second = make();
    EXPECT_FALSE(first.id.isNull());
    EXPECT_NE(first.id, second.id);
    EXPECT_GE(first.date, before);
    EXPECT_LE(first.date, QDateTime::currentDateTimeUtc());
    EXPECT_EQ(first.driveKey, QStringLiteral("a|b|c"));
    EXPECT_EQ(first.driveModelString, QStringLiteral("a b c"));
    EXPECT_EQ(first.discKind, QStringLiteral("CD"));
    EXPECT_EQ(first.discSizeBytes, 7);
    EXPECT_EQ(first.averageBytesPerSecond, 1.5);
    EXPECT_EQ(first.source, Source::rip);
}

TEST(SpeedTestResultTest, ResultsAreEqualOnlyWhenEveryFieldIs) {
    const auto all = example();
    EXPECT_EQ(all, example());
    auto other = all;
    other.id = QUuid::createUuid();
    EXPECT_NE(all, other);
    other = all;
    other.date = all.date.addMSecs(1);
    EXPECT_NE(all, other);
    other = all;
    other.driveKey += u'x';
    EXPECT_NE(all, other);
    other = all;
    other.driveModelString += u'x';
    EXPECT_NE(all, other);
    other = all;
    other.discKind = QStringLiteral("CD");
    EXPECT_NE(all, other);
    other = all;
    other.discSizeBytes += 1;
    EXPECT_NE(all, other);
    other = all;
    other.averageBytesPerSecond += 1;
    EXPECT_NE(all, other);
    other = all;
    other.source = Source::rip;
    EXPECT_NE(all, other);
}

TEST(SpeedTestResultTest, TheObjectHasExactlyTheEightKeysInOrder) {
    EXPECT_EQ(keysOf(exampleJson()),
              QStringList({"id", "date", "driveKey", "driveModelString", "discKind",
                           "discSizeBytes", "averageBytesPerSecond", "source"}));
}

TEST(SpeedTestResultTest, EveryFieldIsWrittenInItsForm) {
    const Json json = exampleJson();
    EXPECT_EQ(text(json, "id"), "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D");
    EXPECT_EQ(text(json, "date"), "2025-01-31T18:04:59Z");
    EXPECT_EQ(text(json, "driveKey"), "HL-DT-ST|DVDRAM GP65NB60|RF01");
    EXPECT_EQ(text(json, "driveModelString"), "HL-DT-ST DVDRAM GP65NB60 RF01");
    EXPECT_EQ(text(json, "discKind"), "DVD");
    EXPECT_EQ(json.at("discSizeBytes").dump(), "4700372992");
    EXPECT_EQ(json.at("averageBytesPerSecond").dump(), "11080000.0");
    EXPECT_EQ(text(json, "source"), "Speed Test");
}

TEST(SpeedTestResultTest, ARipIsWrittenAsRip) {
    auto result = example();
    result.source = Source::rip;
    EXPECT_EQ(text(result.toJson(), "source"), "Rip");
}

TEST(SpeedTestResultTest, EveryFieldComesBack) {
    auto result = example();
    for (const double speed : {0.0, 0.1, 1.0 / 3, 1e-300, 1.7976931348623157e308, 5e-324, 2e6}) {
        for (const qint64 size : {qint64(0), qint64(-1), std::numeric_limits<qint64>::max(),
                                  std::numeric_limits<qint64>::min()}) {
            result.averageBytesPerSecond = speed;
            result.discSizeBytes = size;
            result.source = size < 0 ? Source::rip : Source::speedTest;
            const auto document = encodeHistory({result});
            ASSERT_TRUE(document);
            EXPECT_EQ(decodeHistory(*document), QList<SpeedTestResult>({result}));
        }
    }
}

TEST(SpeedTestResultTest, OddTextsComeBack) {
    auto result = example();
    for (const char16_t* odd :
         {u"", u"||", u"\u00e4\u65e5\U0001F4BF", u"\"\\/\n\t\b\u0001", u"\u2028"}) {
        // The mark is none here: it begins a text, not a file.
        result.driveKey = QChar(QChar::ByteOrderMark) + QString::fromUtf16(odd);
        result.driveModelString = result.driveKey + QChar(u'\0') + result.driveKey;
        result.discKind = result.driveKey;
        EXPECT_EQ(SpeedTestResult::fromJson(Json::parse(result.toJson().dump())), result);
    }
}

TEST(SpeedTestResultTest, ALoneSurrogateIsReplacedAndHarmsNothing) {
    auto result = example();
    result.driveModelString = u'a' + QString(QChar(0xD800)) + u'b';
    const auto document = encodeHistory({result});
    ASSERT_TRUE(document);
    const auto decoded = decodeHistory(*document);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->first().driveModelString, QStringLiteral("a?b"));
}

TEST(SpeedTestResultTest, FractionsOfASecondAreCutOff) {
    auto result = example();
    result.date = QDateTime(QDate(2025, 1, 31), QTime(18, 4, 59, 750), QTimeZone::utc());
    EXPECT_EQ(text(result.toJson(), "date"), "2025-01-31T18:04:59Z");
    const auto decoded = SpeedTestResult::fromJson(result.toJson());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->date, QDateTime(QDate(2025, 1, 31), QTime(18, 4, 59), QTimeZone::utc()));
    EXPECT_NE(*decoded, result);
}

TEST(SpeedTestResultTest, DatesAreWrittenInUtc) {
    auto result = example();
    result.date = QDateTime(QDate(2025, 1, 1), QTime(0, 30), QTimeZone(3600));
    EXPECT_EQ(text(result.toJson(), "date"), "2024-12-31T23:30:00Z");
}

TEST(SpeedTestResultTest, EveryMissingKeyIsRejected) {
    for (const QString& key : keysOf(exampleJson())) {
        Json json = exampleJson();
        json.erase(key.toStdString());
        EXPECT_EQ(SpeedTestResult::fromJson(json), std::nullopt) << key.toStdString();
    }
}

TEST(SpeedTestResultTest, EveryWrongTypeIsRejected) {
    for (const QString& name : keysOf(exampleJson())) {
        const std::string key = name.toStdString();
        const bool number = key == "discSizeBytes" || key == "averageBytesPerSecond";
        for (const Json& value :
             {Json(nullptr), Json(true), Json::array(), Json::object(),
              number ? Json("5") : Json(5), Json::array({exampleJson().at(key)})}) {
            EXPECT_EQ(withValue(key.c_str(), value), std::nullopt) << key << value.dump();
        }
    }
}

TEST(SpeedTestResultTest, KeysAreCaseSensitive) {
    Json json = exampleJson();
    json.erase("id");
    json["ID"] = "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D";
    EXPECT_EQ(SpeedTestResult::fromJson(json), std::nullopt);
}

TEST(SpeedTestResultTest, OtherKeysAndAnotherOrderAreFine) {
    Json reversed;
    const Json json = exampleJson();
    reversed["extra"] = {{"nested", 1}};
    for (const QString& key : keysOf(json)) {
        Json next;
        next[key.toStdString()] = json.at(key.toStdString());
        next.update(reversed);
        reversed = next;
    }
    EXPECT_NE(keysOf(reversed), keysOf(json));
    EXPECT_EQ(SpeedTestResult::fromJson(reversed), example());
}

TEST(SpeedTestResultTest, AnIdentifierInLowerCaseIsTheSameIdentifier) {
    EXPECT_EQ(withText("id", "0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d"), example());
}

TEST(SpeedTestResultTest, IdentifiersInOtherFormsAreRejected) {
    for (const char* other :
         {"", "x", "0A1B2C3D4E5F4A6B8C7D9E0F1A2B3C4D", "{0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D}",
          "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4", "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4DA",
          "GA1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D", "0A1B2C3D-4E5F-4A6B-8C7D9-E0F1A2B3C4D",
          " A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D",
          "\xD9\xA0"
          "A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D"}) {
        EXPECT_EQ(withText("id", other), std::nullopt) << other;
    }
}

TEST(SpeedTestResultTest, DatesInOtherFormsAreRejected) {
    for (const char* other : {"",
                              "2025-01-31",
                              "2025-01-31T18:04:59",
                              "2025-01-31T18:04:59.000Z",
                              "2025-01-31T18:04:59,5Z",
                              "2025-01-31T18:04:59+00:00",
                              "2025-01-31T18:04:59z",
                              "2025-01-31t18:04:59Z",
                              "2025-01-31 18:04:59Z",
                              "20250131T180459Z",
                              "2025-1-31T18:04:59Z",
                              "2025-01-31T18:04Z",
                              "2025-02-30T18:04:59Z",
                              "2025-13-01T18:04:59Z",
                              "2025-00-10T18:04:59Z",
                              "2025-01-00T18:04:59Z",
                              "0000-01-31T18:04:59Z",
                              "2023-02-29T00:00:00Z",
                              "2025-01-31T24:00:00Z",
                              "2025-01-31T18:60:00Z",
                              "2025-01-31T18:04:60Z",
                              "-025-01-31T18:04:59Z",
                              "12025-01-31T18:04:59Z",
                              " 2025-01-31T18:04:59Z",
                              "2025-01-31T18:04:59Z ",
                              "2025-01-31T18:04:59ZZ",
                              "2025-01-31T+8:04:59Z",
                              "2025-01-31T 8:04:59Z",
                              "\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA5-01-31T18:04:59Z"}) {
        EXPECT_EQ(withText("date", other), std::nullopt) << other;
    }
}

TEST(SpeedTestResultTest, ALeapDayIsADate) {
    ASSERT_TRUE(withText("date", "2024-02-29T00:00:00Z"));
    EXPECT_EQ(withText("date", "2024-02-29T23:59:59Z")->date,
              QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59), QTimeZone::utc()));
}

TEST(SpeedTestResultTest, OtherSourcesAreRejected) {
    for (const char* other : {"", "rip", "speed test", "Speed test", "SpeedTest"}) {
        EXPECT_EQ(withText("source", other), std::nullopt) << other;
    }
}

TEST(SpeedTestResultTest, ASizeMustBeAWholeNumberOf64Bits) {
    const auto withSize = [](const char* number) {
        const std::string document = "[" + [&] {
            Json json = exampleJson();
            json["discSizeBytes"] = "SIZE";
            return json.dump();
        }() + "]";
        const QByteArray bytes = QByteArray::fromStdString(document).replace("\"SIZE\"", number);
        const auto history = decodeHistory(bytes);
        return history ? std::optional(history->first().discSizeBytes) : std::nullopt;
    };
    EXPECT_EQ(withSize("0"), 0);
    EXPECT_EQ(withSize("-5"), -5);
    EXPECT_EQ(withSize("9223372036854775807"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(withSize("-9223372036854775808"), std::numeric_limits<qint64>::min());
    for (const char* other : {"1.5", "1.0", "1e3", "9223372036854775808", "18446744073709551615",
                              "18446744073709551616", "-9223372036854775809"}) {
        EXPECT_EQ(withSize(other), std::nullopt) << other;
    }
}

TEST(SpeedTestResultTest, ASpeedMayBeAnyNumber) {
    EXPECT_EQ(withValue("averageBytesPerSecond", Json(2000000))->averageBytesPerSecond, 2e6);
    EXPECT_EQ(withValue("averageBytesPerSecond", Json(-0.5))->averageBytesPerSecond, -0.5);
}

TEST(SpeedTestResultTest, AnythingButAnObjectIsRejected) {
    for (const Json& other : {Json(nullptr), Json(1), Json("x"), Json::array()}) {
        EXPECT_EQ(SpeedTestResult::fromJson(other), std::nullopt);
    }
}

TEST(HistoryTest, AnEmptyHistoryIsAnEmptyArray) {
    EXPECT_EQ(encodeHistory({}), QByteArray("[]"));
    EXPECT_EQ(decodeHistory("[]"), QList<SpeedTestResult>());
    EXPECT_EQ(decodeHistory(" [\n] \n"), QList<SpeedTestResult>());
}

TEST(HistoryTest, ItIsWrittenOneKeyALineIndented) {
    const auto document = encodeHistory({example()});
    ASSERT_TRUE(document);
    const QList<QByteArray> lines = document->split('\n');
    ASSERT_EQ(lines.size(), 12);
    EXPECT_EQ(lines[0], "[");
    for (int i = 2; i < 10; ++i) {
        EXPECT_TRUE(lines[i].startsWith("    \"")) << lines[i].toStdString();
    }
    EXPECT_EQ(lines[11], "]");
}

TEST(HistoryTest, OrderIsKept) {
    QList<SpeedTestResult> history;
    for (int i = 0; i < 3; ++i) {
        history.append(example());
        history.last().discSizeBytes = i;
    }
    EXPECT_EQ(decodeHistory(*encodeHistory(history)), history);
}

TEST(HistoryTest, OneBadElementFailsTheWhole) {
    Json json = Json::array({exampleJson(), exampleJson(), exampleJson()});
    json[1].erase("discKind");
    EXPECT_EQ(decodeHistory(QByteArray::fromStdString(json.dump())), std::nullopt);
    json[1] = exampleJson();
    EXPECT_TRUE(decodeHistory(QByteArray::fromStdString(json.dump())));
    json[2]["source"] = "speed test";
    EXPECT_EQ(decodeHistory(QByteArray::fromStdString(json.dump())), std::nullopt);
}

TEST(HistoryTest, DocumentsThatAreNotAnArrayAreRejected) {
    for (const char* other : {"", " ", "{}", "null", "1", "\"x\"", "not JSON", "[", "[]]", "[],",
                              "[1e999]", "// x\n[]", "['a']", "[\"\xFF\"]"}) {
        EXPECT_EQ(decodeHistory(other), std::nullopt) << other;
    }
    EXPECT_EQ(decodeHistory(QByteArray(100000, '[')), std::nullopt);
    EXPECT_EQ(decodeHistory(QByteArray("[]\0", 3)), std::nullopt);
    EXPECT_EQ(decodeHistory(QByteArray("[]\0x", 4)), std::nullopt);
}

TEST(HistoryTest, KeysOfOthersArePassedOverWhateverTheyHold) {
    Json json = exampleJson();
    json["id of another"] = {{"id", 1}, {"deep", {{{"driveKey", nullptr}}, 2}}};
    json["list"] = {1, {2, {{"source", 3}}}};
    EXPECT_EQ(decodeHistory(QByteArray::fromStdString(Json::array({json}).dump())),
              QList<SpeedTestResult>({example()}));
    json["discKind"] = {"DVD"};
    EXPECT_EQ(decodeHistory(QByteArray::fromStdString(Json::array({json}).dump())), std::nullopt);
}

TEST(HistoryTest, NothingIsReadAfterTheFirstMistake) {
    QByteArray document = *encodeHistory({example()});
    document.replace("Speed Test", "Speed test");
    document.append(QByteArray(1'000'000, ' '));
    for (const QByteArray& wrong :
         {document, QByteArray(1'000'000, '['), QByteArray("x" + document)}) {
        QBuffer buffer;
        buffer.setData(wrong);
        ASSERT_TRUE(buffer.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        EXPECT_EQ(::decodeHistory(buffer), std::nullopt);
        EXPECT_LT(buffer.pos(), 100'000);
    }
}

TEST(HistoryTest, EveryCutOfADocumentIsRejected) {
    const QByteArray document = *encodeHistory({example()});
    for (qsizetype length = 0; length < document.size(); ++length) {
        EXPECT_EQ(decodeHistory(document.left(length)), std::nullopt) << length;
    }
}

TEST(HistoryTest, ValuesThatCouldNotBeReadAgainAreNotWritten) {
    auto result = example();
    for (const double speed : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        result.averageBytesPerSecond = speed;
        EXPECT_EQ(encodeHistory({result}), std::nullopt);
    }
    result = example();
    result.date = QDateTime();
    EXPECT_EQ(encodeHistory({result}), std::nullopt);
    result.date = QDateTime(QDate(10000, 1, 1), QTime(0, 0), QTimeZone::utc());
    EXPECT_EQ(encodeHistory({result}), std::nullopt);
}

TEST(SpeedMultipleTest, EachKindHasItsSingleSpeed) {
    auto result = example();
    EXPECT_EQ(speedMultipleText(result), QStringLiteral("8.0x"));
    result.discKind = QStringLiteral("CD");
    result.averageBytesPerSecond = 1200000;
    EXPECT_EQ(speedMultipleText(result), QStringLiteral("8.0x"));
    result.discKind = QStringLiteral("Disc");
    EXPECT_EQ(speedMultiple(result), 8);
    result.discKind = QStringLiteral("dvd");
    EXPECT_EQ(speedMultiple(result), 8);
    result.discKind = QStringLiteral("BD");
    result.averageBytesPerSecond = 9000000;
    EXPECT_EQ(speedMultipleText(result), QStringLiteral("2.0x"));
}

TEST(SpeedMultipleTest, TheSingleSpeedsAreExact) {
    auto result = example();
    const std::pair<const char*, double> speeds[] = {
        {"DVD", 1385000}, {"BD", 4500000}, {"CD", 150000}, {"Disc", 150000}};
    for (const auto& [kind, bytesPerSecond] : speeds) {
        result.discKind = QString::fromLatin1(kind);
        result.averageBytesPerSecond = bytesPerSecond;
        EXPECT_EQ(speedMultiple(result), 1) << kind;
    }
}

TEST(SpeedMultipleTest, OfTwoEquallyNearDecimalsTheEvenOneIsShown) {
    auto result = example();
    result.discKind = QStringLiteral("CD");
    const std::pair<double, const char*> multiples[] = {
        {8.25, "8.2x"}, {8.75, "8.8x"}, {0.25, "0.2x"}, {0.75, "0.8x"},
        {0.35, "0.3x"}, {8.05, "8.1x"}};  // the last two are a little less and a little more in
                                          // binary
    for (const auto& [multiple, text] : multiples) {
        result.averageBytesPerSecond = multiple * 150000;
        EXPECT_EQ(speedMultiple(result), multiple);
        EXPECT_EQ(speedMultipleText(result), QString::fromLatin1(text));
    }
}

TEST(SpeedMultipleTest, OneDecimalWhateverTheSize) {
    auto result = example();
    result.discKind = QStringLiteral("CD");
    result.averageBytesPerSecond = 0;
    EXPECT_EQ(speedMultipleText(result), QStringLiteral("0.0x"));
    result.averageBytesPerSecond = 150000 * 1234.56;
    EXPECT_EQ(speedMultipleText(result), QStringLiteral("1234.6x"));
    result.averageBytesPerSecond = 1e308;
    EXPECT_EQ(speedMultipleText(result).size(), 306);
}

}  // namespace
