#include "ErrorText.h"

#include <cstring>

QString errorText(int errorNumber) {
    if (const char* text = strerrordesc_np(errorNumber)) {
        return QString::fromLatin1(text);
    }
    return QStringLiteral("Unknown error %1").arg(errorNumber);
}
