#include "JsonText.h"

#include <gtest/gtest.h>

#include <QTimeZone>
#include <limits>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

TEST(JsonTextTest, ALineIsOneObjectAndALineFeed) {
    EXPECT_EQ(JsonText::line(Json{{"a", 1}, {"b", "x\ny"}}), "{\"a\":1,\"b\":\"x\\ny\"}\n");
}

TEST(JsonTextTest, WhatIsNotANumberIsNull) {
    EXPECT_EQ(JsonText::line(
                  JsonText::change("speedBytesPerSecond", std::numeric_limits<double>::infinity())),
              "{\"property\":\"speedBytesPerSecond\",\"value\":null}\n");
}

TEST(JsonTextTest, ALoneSurrogateDoesNotBreakALine) {
    const QByteArray line = JsonText::line(JsonText::text(QString(QChar(0xd800))));
    EXPECT_TRUE(line.endsWith('\n'));
    EXPECT_TRUE(Json::accept(line.toStdString()));
}

TEST(JsonTextTest, ADiscHasItsFieldsAndItsName) {
    const OpticalDisc disc{"disk4", "DVD+R DL", DiscKind::dvd, "FILM", 8'500'000'000, "disk4s1"};
    EXPECT_EQ(JsonText::disc(disc).dump(),
              R"({"bsdName":"disk4","rawType":"DVD+R DL","kind":"DVD","volumeName":"FILM",)"
              R"("totalBytes":8500000000,"imageSourceBSDName":"disk4s1","displayName":"FILM"})");
}

TEST(JsonTextTest, AbsentFieldsAreNull) {
    const OpticalDisc disc{"disk4", "CD-ROM", DiscKind::cd, std::nullopt, std::nullopt, "disk4"};
    const Json json = JsonText::disc(disc);
    EXPECT_TRUE(json["volumeName"].is_null());
    EXPECT_TRUE(json["totalBytes"].is_null());
    EXPECT_EQ(json["displayName"], "CD (CD-ROM)");
    EXPECT_TRUE(JsonText::disc(std::nullopt).is_null());
    EXPECT_TRUE(JsonText::drive(std::nullopt).is_null());
    EXPECT_TRUE(JsonText::text(std::nullopt).is_null());
    EXPECT_TRUE(JsonText::speedResult(std::nullopt).is_null());
}

TEST(JsonTextTest, AnErrorHasItsDescriptionAndItsCase) {
    EXPECT_EQ(JsonText::errorChange(RipError::imagingFailed("exit code 3")).dump(),
              R"({"property":"error","value":"hdiutil exited with an error: exit code 3",)"
              R"("case":"imagingFailed"})");
    EXPECT_EQ(JsonText::errorChange(std::nullopt).dump(), R"({"property":"error","value":null})");
}

TEST(JsonTextTest, AVerdictIsAWordOrItsReason) {
    EXPECT_EQ(JsonText::verifyStatus(VerifyStatus::matched()), "matched");
    EXPECT_EQ(JsonText::verifyStatus(VerifyStatus::mismatched()), "mismatched");
    EXPECT_EQ(JsonText::verifyStatus(VerifyStatus::failed("x")).dump(), R"({"failed":"x"})");
    EXPECT_TRUE(JsonText::verifyStatus(std::nullopt).is_null());
}

TEST(JsonTextTest, AHistoryEntryHasItsMultipleAndTheNickname) {
    SpeedTestResult result = SpeedTestResult::now("V|P|1", "V P 1", "DVD", 4'700'000'000,
                                                  11'080'000, SpeedTestResult::Source::rip);
    const Json entry = JsonText::historyEntry(result, QStringLiteral("Office"));
    EXPECT_EQ(entry["multiple"], 8.0);
    EXPECT_EQ(entry["nickname"], "Office");
    EXPECT_EQ(entry["driveKey"], "V|P|1");
    EXPECT_EQ(entry["source"], "Rip");
    EXPECT_TRUE(JsonText::historyEntry(result, std::nullopt)["nickname"].is_null());
    const std::vector<std::string> keys = [&] {
        std::vector<std::string> names;
        for (const auto& item : entry.items()) {
            names.push_back(item.key());
        }
        return names;
    }();
    EXPECT_EQ(keys, (std::vector<std::string>{"id", "date", "driveKey", "driveModelString",
                                              "discKind", "discSizeBytes", "averageBytesPerSecond",
                                              "source", "multiple", "nickname"}));
}

}  // namespace
