#include "Leftovers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "AbandonedFiles.h"
#include "TemporaryImages.h"
#include "UserFolders.h"

namespace {

// The volume identifier of the primary volume descriptor, in ISO 9660's first descriptor.
std::optional<QString> volumeNameOf(const QString& path) {
    constexpr qint64 descriptorAt = 16 * 2048;
    constexpr qint64 nameAt = 40;
    constexpr qint64 nameBytes = 32;
    QFile image(path);
    if (!image.open(QIODevice::ReadOnly) || !image.seek(descriptorAt)) {
        return std::nullopt;
    }
    const QByteArray descriptor = image.read(nameAt + nameBytes);
    if (descriptor.size() < nameAt + nameBytes || !descriptor.startsWith("\x01"
                                                                         "CD001")) {
        return std::nullopt;
    }
    QString name = QString::fromUtf8(descriptor.mid(nameAt));
    for (QChar& character : name) {
        if (!character.isPrint()) {
            character = QLatin1Char(' ');  // it is shown among others on a line
        }
    }
    name = name.simplified();
    return name.isEmpty() ? std::nullopt : std::optional(name);
}

}  // namespace

QList<Leftover> Leftovers::in(const QString& folder) {
    QList<Leftover> leftovers;
    for (const QString& path : TemporaryImages::leftByRips(folder)) {
        const QFileInfo file(path);
        leftovers.append({path, file.size(), file.lastModified(), volumeNameOf(path)});
    }
    return leftovers;
}

QString Leftovers::commandThatLists(const QString& path) {
    const QString command = QStringLiteral("spindrift-cli leftovers");
    const QString folder = QFileInfo(path).path();
    return QDir(folder) == QDir(UserFolders::temporary())
               ? command
               : command + QStringLiteral(" '%1'").arg(folder);
}

int Leftovers::remove(const Leftover& leftover) {
    return AbandonedFiles::remove(leftover.path);
}
