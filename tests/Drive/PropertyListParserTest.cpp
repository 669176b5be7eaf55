#include "PropertyListParser.h"

#include <gmock/gmock.h>

namespace {

using PropertyListParser::parseDictionary;
using PropertyListParser::Value;

const Value other{std::monostate()};

QString document(const QString& inner) {
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Example//DTD PLIST 1.0//EN\" \"plist.dtd\">\n"
               "<plist version=\"1.0\">\n") +
           inner + QStringLiteral("\n</plist>\n");
}

QString dictionary(const QString& inner) {
    return document(QStringLiteral("<dict>") + inner + QStringLiteral("</dict>"));
}

// What the key "K" with this element holds.
std::optional<Value> valueOf(const char* element) {
    const auto all =
        parseDictionary(dictionary(QStringLiteral("<key>K</key>") + QString::fromUtf8(element)));
    if (!all || all->size() != 1) {
        return std::nullopt;
    }
    return all->value(QStringLiteral("K"));
}

TEST(PropertyListParserTest, TextsIntegersAndListsOfTextsAreRead) {
    const auto all = parseDictionary(
        dictionary(QStringLiteral("\n\t<key>A</key>\n\t<string>text</string>\n\t<key>B</key>\n"
                                  "\t<integer>42</integer>\n\t<key>C</key>\n\t<array>\n"
                                  "\t\t<string>x</string>\n\t\t<string>y</string>\n\t</array>\n")));
    ASSERT_TRUE(all);
    EXPECT_EQ(all->keys(),
              (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
    EXPECT_EQ(all->value(QStringLiteral("A")), Value(QStringLiteral("text")));
    EXPECT_EQ(all->value(QStringLiteral("B")), Value(qint64(42)));
    EXPECT_EQ(all->value(QStringLiteral("C")),
              Value(QStringList{QStringLiteral("x"), QStringLiteral("y")}));
}

TEST(PropertyListParserTest, AnEmptyDictionaryIsADictionary) {
    EXPECT_TRUE(parseDictionary(document(QStringLiteral("<dict/>"))));
    EXPECT_TRUE(parseDictionary(dictionary(QString()))->isEmpty());
}

TEST(PropertyListParserTest, TextsKeepTheirBlanksAndLineEnds) {
    EXPECT_EQ(valueOf("<string> a\n b </string>"), Value(QStringLiteral(" a\n b ")));
}

TEST(PropertyListParserTest, AnEmptyTextIsAText) {
    EXPECT_EQ(valueOf("<string></string>"), Value(QString()));
    EXPECT_EQ(valueOf("<string/>"), Value(QString()));
}

TEST(PropertyListParserTest, EntitiesCharacterReferencesAndCdataAreText) {
    EXPECT_EQ(valueOf("<string>A &amp; B &lt;&gt;&quot;&apos; &#233;&#x1F4BF;</string>"),
              Value(QString::fromUtf8("A & B <>\"' \u00e9\U0001F4BF")));
    EXPECT_EQ(valueOf("<string>a<![CDATA[<&b]]>c<!-- not this -->d</string>"),
              Value(QStringLiteral("a<&bcd")));
}

TEST(PropertyListParserTest, TextsOfEveryScriptAreRead) {
    const char* text = "e\u0301 \u65e5\u672c \u0639\u0631\u0628 \U0001F468\u200D\U0001F469";
    EXPECT_EQ(valueOf((std::string("<string>") + text + "</string>").c_str()),
              Value(QString::fromUtf8(text)));
}

TEST(PropertyListParserTest, IntegersReachFromTheLeastToTheGreatest) {
    EXPECT_EQ(valueOf("<integer>0</integer>"), Value(qint64(0)));
    EXPECT_EQ(valueOf("<integer>-1</integer>"), Value(qint64(-1)));
    EXPECT_EQ(valueOf("<integer>+7</integer>"), Value(qint64(7)));
    EXPECT_EQ(valueOf("<integer> 5 \n</integer>"), Value(qint64(5)));
    EXPECT_EQ(valueOf("<integer>0010</integer>"), Value(qint64(10)));
    EXPECT_EQ(valueOf("<integer>0X1f</integer>"), Value(qint64(31)));
    EXPECT_EQ(valueOf("<integer>0x1F</integer>"), Value(qint64(31)));
    EXPECT_EQ(valueOf("<integer>-0x10</integer>"), Value(qint64(-16)));
    EXPECT_EQ(valueOf("<integer>9223372036854775807</integer>"),
              Value(std::numeric_limits<qint64>::max()));
    EXPECT_EQ(valueOf("<integer>-9223372036854775808</integer>"),
              Value(std::numeric_limits<qint64>::min()));
}

TEST(PropertyListParserTest, AnIntegerThatDoesNotFitIsSomethingElse) {
    for (const char* element :
         {"<integer>9223372036854775808</integer>", "<integer>18446744073709551615</integer>",
          "<integer>-9223372036854775809</integer>", "<integer></integer>", "<integer/>",
          "<integer>1.5</integer>", "<integer>1,000</integer>", "<integer>many</integer>",
          "<integer>1e3</integer>"}) {
        EXPECT_EQ(valueOf(element), other) << element;
    }
}

TEST(PropertyListParserTest, RealNumbersAreReadInTheirOwnKind) {
    EXPECT_EQ(valueOf("<real>1.5</real>"), Value(1.5));
    EXPECT_EQ(valueOf("<real>1e3</real>"), Value(1000.0));
    EXPECT_EQ(valueOf("<real>x</real>"), other);
}

TEST(PropertyListParserTest, OtherElementsAreSomethingElseAndEndWhereTheyEnd) {
    for (const char* element :
         {"<true/>", "<false/>", "<date>2026-01-01T00:00:00Z</date>", "<data>AAAA</data>",
          "<dict><key>K</key><string>inner</string></dict>", "<dict/>",
          "<dict><key>D</key><dict><key>E</key><array><dict/></array></dict></dict>"}) {
        const auto all =
            parseDictionary(dictionary(QStringLiteral("<key>K</key>") + QString::fromUtf8(element) +
                                       QStringLiteral("<key>After</key><string>it</string>")));
        ASSERT_TRUE(all) << element;
        EXPECT_EQ(all->size(), 2) << element;
        EXPECT_EQ(all->value(QStringLiteral("K")), other) << element;
        EXPECT_EQ(all->value(QStringLiteral("After")), Value(QStringLiteral("it"))) << element;
    }
}

TEST(PropertyListParserTest, AnEmptyListIsAListOfTexts) {
    EXPECT_EQ(valueOf("<array/>"), Value(QStringList()));
    EXPECT_EQ(valueOf("<array>\n</array>"), Value(QStringList()));
    EXPECT_EQ(valueOf("<array><string/></array>"), Value(QStringList{QString()}));
}

TEST(PropertyListParserTest, AListWithAnythingButTextsIsSomethingElse) {
    for (const char* element :
         {"<array><string>a</string><integer>1</integer></array>", "<array><true/></array>",
          "<array><array/></array>", "<array><dict/><string>a</string></array>",
          "<array><array><string>a</string></array></array>"}) {
        EXPECT_EQ(valueOf(element), other) << element;
    }
}

TEST(PropertyListParserTest, OfEqualKeysTheLastCounts) {
    const auto all = parseDictionary(dictionary(
        QStringLiteral("<key>K</key><string>a</string><key>K</key><integer>1</integer>")));
    ASSERT_TRUE(all);
    EXPECT_EQ(all->value(QStringLiteral("K")), Value(qint64(1)));
}

TEST(PropertyListParserTest, CommentsAndInstructionsBetweenElementsAreSkipped) {
    const auto all = parseDictionary(
        QStringLiteral("<!-- a --><plist><!-- b --><dict><!-- c --><key>K</key><?pi?><!-- d -->"
                       "<string>v</string><!-- e --></dict><!-- f --></plist><!-- g -->"));
    ASSERT_TRUE(all);
    EXPECT_EQ(all->value(QStringLiteral("K")), Value(QStringLiteral("v")));
}

TEST(PropertyListParserTest, CarriageReturnsBeforeLineFeedsDoNoHarm) {
    const auto all =
        parseDictionary(dictionary(QStringLiteral("\r\n<key>K</key>\r\n<string>v</string>\r\n")));
    ASSERT_TRUE(all);
    EXPECT_EQ(all->value(QStringLiteral("K")), Value(QStringLiteral("v")));
}

TEST(PropertyListParserTest, BlankLinesAndAByteOrderMarkAroundTheDocumentDoNoHarm) {
    const QString whole = dictionary(QStringLiteral("<key>K</key><string>v</string>"));
    const QString blanks = QStringLiteral("\n \t\r\n");
    const QString mark(QChar::ByteOrderMark);
    for (const QString& text : QStringList{blanks + whole + blanks, mark + whole}) {
        const auto all = parseDictionary(text);
        ASSERT_TRUE(all);
        EXPECT_EQ(all->value(QStringLiteral("K")), Value(QStringLiteral("v")));
    }
}

TEST(PropertyListParserTest, TheEncodingThatTheDeclarationNamesIsNotAskedFor) {
    for (const char* encoding : {"ISO-8859-1", "UTF-16", "no-such-encoding"}) {
        const auto all = parseDictionary(
            QStringLiteral("<?xml version=\"1.0\" encoding=\"%1\"?><plist><dict><key>K</key>"
                           "<string>\u00e9\u65e5</string></dict></plist>")
                .arg(QLatin1String(encoding)));
        ASSERT_TRUE(all) << encoding;
        EXPECT_EQ(all->value(QStringLiteral("K")), Value(QStringLiteral("\u00e9\u65e5")));
    }
}

TEST(PropertyListParserTest, EntitiesOfTheDocumentTypeAreReadAndThoseOfOtherFilesAreEmpty) {
    const auto valueWith = [](const char* declaration) {
        const auto all = parseDictionary(
            QStringLiteral("<!DOCTYPE plist [<!ENTITY e %1>]><plist><dict><key>K</key>"
                           "<string>&e;</string></dict></plist>")
                .arg(QLatin1String(declaration)));
        return all ? std::optional(all->value(QStringLiteral("K"))) : std::nullopt;
    };
    EXPECT_EQ(valueWith("\"inner\""), Value(QStringLiteral("inner")));
    EXPECT_EQ(valueWith("SYSTEM \"file:///etc/hostname\""), Value(QString()));
}

TEST(PropertyListParserTest, AnythingButADictionaryAtTheTopIsAbsent) {
    for (const char* inner : {"<array/>", "<string>a</string>", "<integer>1</integer>", "", "text",
                              "<array><dict/></array>"}) {
        EXPECT_EQ(parseDictionary(document(QString::fromUtf8(inner))), std::nullopt) << inner;
    }
}

TEST(PropertyListParserTest, OtherDocumentsAreAbsent) {
    for (const char* text :
         {"", " ", "no list", "<dict><key>K</key><string>v</string></dict>", "<html><dict/></html>",
          "bplist00\u0001", "{ \"K\" : \"v\" }", "<plist><dict/></plist><plist/>",
          "<plist><dict/><dict/></plist>",
          "<plist><dict><key>K</key><string>&unknown;</string></dict></plist>"}) {
        EXPECT_EQ(parseDictionary(QString::fromUtf8(text)), std::nullopt) << text;
    }
}

TEST(PropertyListParserTest, MalformedDictionariesAreAbsent) {
    for (const char* inner :
         {"<key>K</key>", "<key>A</key><key>B</key><string>v</string>",
          "<key>A</key><key>B</key><key>C</key><string>v</string>", "<string>v</string>",
          "<key>K</key><string>a & b</string>", "<key>K</key><string>a<b/>c</string>",
          "<key>K</key><string>v</key>", "<key>K<b/></key><string>v</string>"}) {
        EXPECT_EQ(parseDictionary(dictionary(QString::fromUtf8(inner))), std::nullopt) << inner;
    }
}

TEST(PropertyListParserTest, ADocumentThatIsCutAnywhereIsAbsent) {
    const QString whole = dictionary(
        QStringLiteral("<key>K</key><string>v</string><key>L</key><array><string>w</string>"
                       "</array>"));
    ASSERT_TRUE(parseDictionary(whole));
    const qsizetype end = whole.lastIndexOf(QLatin1Char('>'));
    for (qsizetype length = 0; length <= end; ++length) {
        EXPECT_EQ(parseDictionary(whole.left(length)), std::nullopt) << length;
    }
}

TEST(PropertyListParserTest, DeepNestingIsSkippedWithoutHarm) {
    const int depth = 20000;
    const auto all = parseDictionary(
        dictionary(QStringLiteral("<key>K</key>") + QStringLiteral("<array>").repeated(depth) +
                   QStringLiteral("</array>").repeated(depth) +
                   QStringLiteral("<key>After</key><string>it</string>")));
    ASSERT_TRUE(all);
    EXPECT_EQ(all->value(QStringLiteral("After")), Value(QStringLiteral("it")));
}

TEST(PropertyListParserTest, EntitiesThatGrowWithoutEndAreAbsent) {
    QString text = QStringLiteral("<!DOCTYPE plist [<!ENTITY e0 \"xxxxxxxxxx\">");
    for (int i = 1; i < 10; ++i) {
        text += QStringLiteral("<!ENTITY e%1 \"%2\">")
                    .arg(i)
                    .arg(QStringLiteral("&e%1;").arg(i - 1).repeated(10));
    }
    text += QStringLiteral("]><plist><dict><key>K</key><string>&e9;</string></dict></plist>");
    EXPECT_EQ(parseDictionary(text), std::nullopt);
}

}  // namespace
