#include "ProgressLines.h"

#include <algorithm>
#include <cmath>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "FuzzText.h"

// The chunks are the input's texts.
FUZZ_TARGET(ProgressLines) {
    FuzzInput input(bytes);
    ProgressLines pieces;
    ProgressLines whole;
    QByteArray all;
    QList<double> fractions;
    bool isUtf8 = true;
    while (!input.isEmpty()) {
        const std::string chunk = input.text();
        all += FuzzText::bytesOf(chunk);
        isUtf8 = isUtf8 && FuzzText::isUtf8(chunk);
        fractions += pieces.append(FuzzText::bytesOf(chunk));
    }
    for (const double fraction : fractions) {
        ensure(fraction == -1 || (fraction >= 0 && fraction <= 1), "a fraction is 0 to 1, or -1");
    }
    ensure(static_cast<std::size_t>(fractions.size()) <= bytes.size(),
           "there are no more fractions than bytes");
    if (isUtf8) {
        ensure(whole.append(all) == fractions, "where a text is cut makes no difference");
    }
    const auto next = pieces.append("\nPERCENT:50\n");
    ensure(!next.isEmpty() && next.last() == 0.5, "the line after a bad one is read");
}
