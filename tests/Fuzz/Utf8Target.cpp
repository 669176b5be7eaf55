#include "Utf8.h"

#include <QStringList>
#include <algorithm>

#include "Characters.h"
#include "FuzzTarget.h"
#include "FuzzText.h"

FUZZ_TARGET(Utf8) {
    const std::string valid = Utf8::valid(bytes);
    ensure((valid == bytes) == FuzzText::isUtf8(bytes), "both readers agree about what UTF-8 is");
    ensure(FuzzText::isUtf8(valid), "what is made valid is UTF-8");
    ensure(Utf8::valid(valid) == valid, "what is valid stays");

    const std::string line = Utf8::oneLine(bytes);
    const QString text = FuzzText::of(line);
    ensure(FuzzText::isUtf8(line), "a line is UTF-8");
    ensure(Utf8::oneLine(line) == line, "a line stays");
    ensure(std::none_of(text.begin(), text.end(),
                        [](QChar c) {
                            return c.category() == QChar::Other_Control || c == QChar(0x2028) ||
                                   c == QChar(0x2029);
                        }),
           "a line has no control characters");

    constexpr std::size_t width = 20;
    const QString padded = FuzzText::of(Utf8::padded(valid, width));
    ensure(padded.toUcs4().size() >= static_cast<qsizetype>(width), "a column is wide enough");
    ensure(padded.startsWith(FuzzText::of(valid)), "a column begins with its text");
    ensure(bytes.find(Utf8::trimmed(bytes)) != std::string_view::npos, "trimming only cuts");

    const QStringList characters = Characters::of(text);
    ensure(characters.join(QString()) == text, "the characters are the text");
    ensure(std::all_of(characters.begin(), characters.end(),
                       [](const QString& c) { return !c.isEmpty() && c.isValidUtf16(); }),
           "no character is empty or cut");
    const auto strict = strictUtf8(FuzzText::bytesOf(bytes));
    ensure(!strict || FuzzText::bytesOf(bytes) == strict->toUtf8(), "a text is its bytes again");
}
