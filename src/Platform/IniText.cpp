#include "IniText.h"

#include <QByteArrayView>

namespace {

struct Places {
    qsizetype value = -1;  // of the last value of the key, and how long it is
    qsizetype length = 0;
    qsizetype sectionEnd = -1;  // behind the last line of the last [General]
};

Places find(QByteArrayView text, QByteArrayView key) {
    Places places;
    bool isGeneral = true;
    qsizetype start = text.startsWith("\xef\xbb\xbf") ? 3 : 0;
    while (start < text.size()) {
        const qsizetype feed = text.indexOf('\n', start);
        const qsizetype end = feed < 0 ? text.size() : feed;
        const QByteArrayView line = text.sliced(start, end - start).trimmed();
        const qsizetype equals = line.indexOf('=');
        if (line.startsWith('[')) {
            isGeneral = line.compare("[General]", Qt::CaseInsensitive) == 0;
            places.sectionEnd = isGeneral ? end : places.sectionEnd;
        } else if (isGeneral && places.sectionEnd >= 0 && !line.isEmpty()) {
            places.sectionEnd = end;
        }
        if (isGeneral && equals > 0 && line.first(equals).trimmed() == key) {
            const QByteArrayView value = line.sliced(equals + 1).trimmed();
            places.value = value.isEmpty() ? line.data() + equals + 1 - text.data()
                                           : value.data() - text.data();
            places.length = value.size();
        }
        start = end + 1;
    }
    return places;
}

}  // namespace

std::optional<QString> IniText::value(const QByteArray& text, const QByteArray& key) {
    const Places places = find(text, key);
    if (places.value < 0) {
        return std::nullopt;
    }
    QByteArray value = text.mid(places.value, places.length);
    if (value.startsWith('"')) {
        const qsizetype end = value.indexOf('"', 1);
        value = value.mid(1, end < 0 ? -1 : end - 1);
    } else if (const qsizetype comment = value.indexOf(';'); comment >= 0) {
        value = value.left(comment).trimmed();
    }
    return QString::fromUtf8(value);
}

QByteArray IniText::withValue(QByteArray text, const QByteArray& key, const QByteArray& value) {
    const Places places = find(text, key);
    if (places.value >= 0) {
        return text.replace(places.value, places.length, value);
    }
    const QByteArray line = key + '=' + value;
    if (places.sectionEnd >= 0) {
        return text.insert(places.sectionEnd, '\n' + line);
    }
    if (!text.isEmpty()) {
        text += text.endsWith('\n') ? "\n" : "\n\n";
    }
    return text + "[General]\n" + line + '\n';
}
