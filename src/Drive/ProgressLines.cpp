#include "ProgressLines.h"

#include <locale.h>
#include <stdlib.h>

#include <QLatin1String>
#include <algorithm>
#include <optional>

#include "StrictUtf8.h"

namespace {

constexpr QLatin1String marker("PERCENT:");

// A line that goes on for longer than this holds no percentage; only bounds the memory that a tool
// without line ends can take.
constexpr qsizetype longestLine = 64L * 1024;

bool isNewline(QChar character) {
    switch (character.unicode()) {
        case 0x000A:  // line feed
        case 0x000B:  // vertical tab
        case 0x000C:  // form feed
        case 0x000D:  // carriage return; with a line feed it ends one line and an empty one
        case 0x0085:  // next line
        case 0x2028:  // line separator
        case 0x2029:  // paragraph separator
            return true;
        default:
            return false;
    }
}

bool isBlank(QChar character) {
    return character == QLatin1Char(' ') || character == QLatin1Char('\t');
}

QStringView withoutBlanksAtEnds(QStringView text) {
    while (!text.isEmpty() && isBlank(text.front())) {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && isBlank(text.back())) {
        text.chop(1);
    }
    return text;
}

// Takes the digits at the front of the text; how many there were.
qsizetype takeDigits(QStringView& text) {
    const auto end = std::find_if(text.begin(), text.end(), [](QChar character) {
        return character < QLatin1Char('0') || character > QLatin1Char('9');
    });
    const qsizetype count = end - text.begin();
    text = text.sliced(count);
    return count;
}

bool takeOneOf(QStringView& text, char first, char second) {
    if (text.isEmpty() ||
        (text.front() != QLatin1Char(first) && text.front() != QLatin1Char(second))) {
        return false;
    }
    text = text.sliced(1);
    return true;
}

// An optional sign, digits with at most one point among or beside them, an optional exponent.
// Names such as "inf" and hexadecimal forms are not decimal numbers, whatever the C library says.
bool isDecimalNumber(QStringView text) {
    takeOneOf(text, '+', '-');
    qsizetype digits = takeDigits(text);
    if (takeOneOf(text, '.', '.')) {
        digits += takeDigits(text);
    }
    if (digits == 0) {
        return false;
    }
    if (takeOneOf(text, 'e', 'E')) {
        takeOneOf(text, '+', '-');
        if (takeDigits(text) == 0) {
            return false;
        }
    }
    return text.isEmpty();
}

std::optional<double> fractionIn(QStringView line) {
    const qsizetype start = line.indexOf(marker);
    if (start < 0) {
        return std::nullopt;
    }
    const QStringView number = withoutBlanksAtEnds(line.sliced(start + marker.size()));
    if (!isDecimalNumber(number)) {
        return std::nullopt;
    }
    // Too large a number comes back as an infinity, too small a one as zero.
    static const locale_t standardLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const double percent = strtod_l(number.toLatin1().constData(), nullptr, standardLocale);
    return percent < 0 ? -1 : std::min(percent / 100, 1.0);
}

}  // namespace

QList<double> ProgressLines::append(const QByteArray& chunk) {
    QList<double> fractions;
    const std::optional<QString> text = strictUtf8(chunk);
    if (!text) {
        return fractions;
    }
    QStringView rest(*text);
    while (true) {
        const auto end = std::find_if(rest.begin(), rest.end(), isNewline);
        m_buffer += rest.first(end - rest.begin());
        if (end == rest.end()) {
            break;
        }
        if (const auto fraction = fractionIn(m_buffer)) {
            fractions.append(*fraction);
        }
        m_buffer.clear();
        rest = rest.sliced(end - rest.begin() + 1);
    }
    if (m_buffer.size() > longestLine) {
        shortenBuffer();
    }
    return fractions;
}

void ProgressLines::shortenBuffer() {
    const qsizetype start = m_buffer.indexOf(marker);
    if (start < 0) {
        // The marker may have begun.
        m_buffer = m_buffer.last(marker.size() - 1);
    } else if (m_buffer.size() - start > longestLine) {
        m_buffer = marker + QLatin1String("too long to be a number");
    } else {
        m_buffer.remove(0, start);
    }
}
