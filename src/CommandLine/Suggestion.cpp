#include "Suggestion.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

// How many characters to insert, remove or replace.
qsizetype distance(const QString& one, const QString& other) {
    std::vector<qsizetype> row(static_cast<std::size_t>(other.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const QChar left : one) {
        qsizetype diagonal = row.front()++;
        for (std::size_t column = 1; column < row.size(); ++column) {
            const bool same = left == other.at(static_cast<qsizetype>(column) - 1);
            const qsizetype replaced = diagonal + (same ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min({diagonal + 1, row[column - 1] + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

QString suggestion(const QString& text, const QStringList& names, const QString& prefix) {
    const QString typed = text.toLower();
    // One slip in a short word, more in a long one.
    qsizetype least = std::max<qsizetype>(1, typed.size() / 3) + 1;
    QString nearest;
    for (const QString& name : names) {
        const qsizetype slips = distance(typed, name.toLower());
        if (slips < least && slips < typed.size()) {
            least = slips;
            nearest = name;
        }
    }
    return nearest.isEmpty() ? QString()
                             : QStringLiteral(" Did you mean “%1%2”?").arg(prefix, nearest);
}
