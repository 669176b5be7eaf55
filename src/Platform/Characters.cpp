#include "Characters.h"

#include <unicode/ubrk.h>

QStringList Characters::of(const QString& text) {
    // QTextBoundaryFinder of Qt 6.4 cuts an emoji in halves after an Indic, Thai, Khmer or Tibetan
    // letter.
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUBreakIteratorPointer boundaries(
        ubrk_open(UBRK_CHARACTER, "", reinterpret_cast<const UChar*>(text.utf16()),
                  static_cast<int32_t>(text.size()), &status));
    if (U_FAILURE(status)) {
        qFatal("ICU does not tell characters apart: %s", u_errorName(status));
    }
    QStringList result;
    int32_t start = 0;
    for (int32_t end = ubrk_next(boundaries.getAlias()); end != UBRK_DONE;
         end = ubrk_next(boundaries.getAlias())) {
        result << text.mid(start, end - start);
        start = end;
    }
    return result;
}
