#include "AbandonedCopies.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <ctime>

#include "Descriptor.h"
#include "UserFolders.h"

namespace {

// Locks are not known to every file system, nor beyond every network: a copy that runs is also
// written to all the time.
constexpr time_t longestPause = 3600;  // seconds

bool isAbandoned(int descriptor) {
    struct stat attributes = {};
    return fstat(descriptor, &attributes) == 0 && S_ISREG(attributes.st_mode) &&
           attributes.st_uid == geteuid() && attributes.st_mtime < time(nullptr) - longestPause &&
           flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

}  // namespace

QString AbandonedCopies::freshPath(const QString& destination) {
    return QFileInfo(destination).path() + QStringLiteral("/.spindrift-") +
           UserFolders::freshIdentifier() + QStringLiteral(".part");
}

void AbandonedCopies::claim(int descriptor) {
    flock(descriptor, LOCK_EX | LOCK_NB);
}

void AbandonedCopies::removeFrom(const QString& folder) {
    static const QRegularExpression own(QRegularExpression::anchoredPattern(
        QStringLiteral("\\.spindrift-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.part")));
    const QDir place(folder);
    for (const QString& name : place.entryList({QStringLiteral(".spindrift-*.part")},
                                               QDir::Files | QDir::Hidden | QDir::NoSymLinks)) {
        if (!own.match(name).hasMatch()) {
            continue;
        }
        const QByteArray path = QFile::encodeName(place.filePath(name));
        const Descriptor file(
            open(path.constData(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (file.isOpen() && isAbandoned(file.number())) {
            unlink(path.constData());
        }
    }
}
