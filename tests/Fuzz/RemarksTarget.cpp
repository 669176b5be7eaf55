#include "FuzzTarget.h"
#include "FuzzText.h"
#include "Remarks.h"

FUZZ_TARGET(Remarks) {
    for (const QString& remark : remarksIn(FuzzText::bytesOf(bytes))) {
        ensure(!remark.isEmpty(), "a remark says something");
        ensure(remark == remark.trimmed(), "no blanks stand around a remark");
        ensure(FuzzText::isOneLine(remark), "a remark is one line");
        ensure(remark.isValidUtf16(), "a remark is of whole characters");
    }
}
