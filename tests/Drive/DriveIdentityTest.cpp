#include "DriveIdentity.h"

#include <gmock/gmock.h>

#include <QSet>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

const DriveIdentity pioneer{QStringLiteral("PIONEER"), QStringLiteral("BD-RW BDR-209D"),
                            QStringLiteral("1.10")};

DriveIdentity identity(const char* vendor, const char* product, const char* revision) {
    return {QString::fromUtf8(vendor), QString::fromUtf8(product), QString::fromUtf8(revision)};
}

TEST(DriveIdentityTest, TheModelIsAllFieldsInOrderWithSingleBlanks) {
    EXPECT_EQ(pioneer.modelString(), QStringLiteral("PIONEER BD-RW BDR-209D 1.10"));
}

TEST(DriveIdentityTest, EmptyFieldsAreLeftOutOfTheModel) {
    EXPECT_EQ(identity("V", "", "R").modelString(), QStringLiteral("V R"));
    EXPECT_EQ(identity("", "P", "").modelString(), QStringLiteral("P"));
    EXPECT_EQ(identity("", "", "R").modelString(), QStringLiteral("R"));
    EXPECT_EQ(identity("", "", "").modelString(), QString());
    EXPECT_EQ((DriveIdentity{QString(), QStringLiteral(""), QStringLiteral("R")}).modelString(),
              QStringLiteral("R"));
}

TEST(DriveIdentityTest, AFieldOfBlanksIsNotEmpty) {
    EXPECT_EQ(identity("V", " ", "R").modelString(), QStringLiteral("V   R"));
}

TEST(DriveIdentityTest, TheKeyHasAllThreeFieldsEvenWhenEmpty) {
    EXPECT_EQ(pioneer.driveKey(), QStringLiteral("PIONEER|BD-RW BDR-209D|1.10"));
    EXPECT_EQ(identity("V", "", "R").driveKey(), QStringLiteral("V||R"));
    EXPECT_EQ(identity("", "", "").driveKey(), QStringLiteral("||"));
}

TEST(DriveIdentityTest, EveryFieldCountsForEqualityToTheCharacter) {
    EXPECT_EQ(identity("a", "b", "c"), identity("a", "b", "c"));
    EXPECT_NE(identity("a", "b", "c"), identity("A", "b", "c"));
    EXPECT_NE(identity("a", "b", "c"), identity("a", "b ", "c"));
    EXPECT_NE(identity("a", "b", "c"), identity("a", "b", ""));
}

TEST(DriveIdentityTest, EveryFieldCountsForItsHash) {
    QSet<DriveIdentity> all;
    for (const char* field : {"", "a", "b", "c"}) {
        all << identity(field, "b", "c") << identity("a", field, "c") << identity("a", "b", field);
    }
    // Three times four, of which abc comes three times.
    EXPECT_EQ(all.size(), 10);
    EXPECT_EQ(qHash(identity("a", "b", "c")), qHash(identity("a", "b", "c")));
    EXPECT_NE(qHash(identity("a", "b", "c")), qHash(identity("c", "b", "a")));
    EXPECT_NE(qHash(identity("a", "b", "c")), qHash(identity("a", "b", "d")));
}

TEST(DriveIdentityTest, JsonHasTheThreeKeysInOrder) {
    EXPECT_EQ(pioneer.toJson().dump(),
              R"({"vendor":"PIONEER","product":"BD-RW BDR-209D","revision":"1.10"})");
    EXPECT_EQ(identity("", "", "").toJson().dump(), R"({"vendor":"","product":"","revision":""})");
}

TEST(DriveIdentityTest, JsonGivesTheIdentityBack) {
    const DriveIdentity marked{QChar(QChar::ByteOrderMark) + pioneer.vendor, QString(), QString()};
    for (const DriveIdentity& each : {pioneer, marked, identity("", "", ""),
                                      identity("\u00e9e\u0301\U0001F4BF", "\"\\\n\t", "|")}) {
        EXPECT_EQ(DriveIdentity::fromJson(each.toJson()), each);
        EXPECT_EQ(DriveIdentity::fromJson(Json::parse(each.toJson().dump())), each);
    }
}

TEST(DriveIdentityTest, JsonWithoutOneOfTheKeysIsNoIdentity) {
    for (const char* key : {"vendor", "product", "revision"}) {
        Json json = pioneer.toJson();
        json.erase(key);
        EXPECT_EQ(DriveIdentity::fromJson(json), std::nullopt) << key;
    }
}

TEST(DriveIdentityTest, JsonWithAKeyThatIsNoTextIsNoIdentity) {
    for (const char* key : {"vendor", "product", "revision"}) {
        for (const Json& value :
             {Json(nullptr), Json(1), Json(true), Json::array({"a"}), Json{{"a", "b"}}}) {
            Json json = pioneer.toJson();
            json[key] = value;
            EXPECT_EQ(DriveIdentity::fromJson(json), std::nullopt) << key << value;
        }
    }
}

TEST(DriveIdentityTest, OtherJsonIsNoIdentity) {
    for (const Json& json : {Json(), Json(1), Json("vendor"), Json::array(), Json::object()}) {
        EXPECT_EQ(DriveIdentity::fromJson(json), std::nullopt) << json;
    }
}

TEST(DriveIdentityTest, OtherKeysAreIgnored) {
    Json json = pioneer.toJson();
    json["serial"] = 7;
    EXPECT_EQ(DriveIdentity::fromJson(json), pioneer);
}

TEST(DriveIdentityTest, KeysAreCaseSensitive) {
    EXPECT_EQ(DriveIdentity::fromJson(Json{{"Vendor", "a"}, {"product", "b"}, {"revision", "c"}}),
              std::nullopt);
}

TEST(DriveIdentityTest, ALoneSurrogateIsWrittenAsReadableJson) {
    const DriveIdentity odd{QString(QChar(0xD83D)), QString(QChar(0xDCBF)), QStringLiteral("r")};
    const std::string text = odd.toJson().dump();
    const auto back = DriveIdentity::fromJson(Json::parse(text));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->vendor.size(), 1);
    EXPECT_EQ(back->product.size(), 1);
    EXPECT_EQ(back->revision, QStringLiteral("r"));
}

TEST(DriveIdentityTest, BytesThatAreNoUtf8BecomeReplacementCharacters) {
    const auto odd =
        DriveIdentity::fromJson(Json{{"vendor", "a\xff"}, {"product", "b"}, {"revision", "c"}});
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->vendor, QString::fromUtf8("a\uFFFD"));
}

}  // namespace
