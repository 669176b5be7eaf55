#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "FuzzText.h"
#include "IniText.h"

namespace {

// Whether the second text is the first with something in it replaced by no more than this.
bool differsInOnePlace(const QByteArray& before, const QByteArray& after, qsizetype longest) {
    qsizetype head = 0;
    while (head < before.size() && head < after.size() && before[head] == after[head]) {
        ++head;
    }
    qsizetype tail = 0;
    while (tail < before.size() - head && tail < after.size() - head &&
           before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) {
        ++tail;
    }
    return after.size() - head - tail <= longest;
}

}  // namespace

FUZZ_TARGET(SettingsText) {
    const QByteArray text = FuzzText::bytesOf(bytes);
    const QByteArray key = "retroMode";
    const QByteArray other = "ejectWhenDone";
    for (const QByteArray value : {"true", "false"}) {
        const QByteArray after = IniText::withValue(text, key, value);
        ensure(IniText::value(after, key) == QString::fromLatin1(value), "what was set is there");
        ensure(IniText::value(after, other) == IniText::value(text, other),
               "the other keys stay as they are");
        ensure(IniText::withValue(after, key, value) == after, "setting it twice changes nothing");
        ensure(
            differsInOnePlace(text, after, QByteArray("\n\n[General]\nretroMode=false\n").size()),
            "all other bytes stay");
    }
}
