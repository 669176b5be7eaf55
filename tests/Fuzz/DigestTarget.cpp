#include "FuzzTarget.h"
#include "FuzzText.h"
#include "Verification.h"

FUZZ_TARGET(Digest) {
    const auto digest = Verification::parseDigest(FuzzText::bytesOf(bytes));
    const bool isText = FuzzText::isUtf8(bytes);
    const bool isBlank = bytes.find_first_not_of(' ') == std::string_view::npos;
    ensure(digest.has_value() == (isText && !isBlank), "any word is a digest, and nothing else");
    if (digest) {
        ensure(!digest->isEmpty(), "a digest is not empty");
        ensure(!digest->contains(QLatin1Char(' ')), "a digest is one word");
    }
}
