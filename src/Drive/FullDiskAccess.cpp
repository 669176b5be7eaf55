#include "FullDiskAccess.h"

#include <fcntl.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "Descriptor.h"
#include "PracticeFolder.h"
#include "UserFolders.h"

QStringList FullDiskAccess::probeFiles() {
    const QString home = UserFolders::home();
    QStringList files{home + QStringLiteral("/Library/Application Support/com.apple.TCC/TCC.db"),
                      home + QStringLiteral("/Library/Safari/CloudTabs.db")};
    if (const auto practice = PracticeFolder::chosen()) {
        return files << practice->disc() << practice->path;
    }
    const QString devices = QStringLiteral("/dev/");
    if (const QString chosen = qEnvironmentVariable("SPINDRIFT_DRIVE"); !chosen.isEmpty()) {
        return files << (chosen.startsWith(devices) ? chosen : devices + chosen);
    }
    const QDir blocks(QStringLiteral("/sys/class/block"));
    for (const QString& name :
         blocks.entryList({QStringLiteral("sr[0-9]*")}, QDir::NoFilter, QDir::Name)) {
        files << devices + name;
    }
    return files;
}

int FullDiskAccess::tryToOpen(const QString& path) {
    const auto practice = PracticeFolder::chosen();
    if (practice && (path == practice->disc() || path == practice->path)) {
        const auto denies = practice->deniesAccess();
        if (!denies) {
            return EINVAL;
        }
        if (*denies) {
            return EACCES;
        }
    }
    // Non-blocking: a plain open of a drive would pull its tray in.
    const Descriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return file.isOpen() ? 0 : errno;
}

bool FullDiskAccess::decide(const QStringList& files, const Open& open) {
    for (const QString& file : files) {
        if (!QFileInfo::exists(file)) {
            continue;
        }
        switch (open(file)) {
            case 0:
                return true;
            case EACCES:
            case EPERM:
                return false;
            default:
                break;
        }
    }
    return false;
}

bool FullDiskAccess::isGranted() {
    return decide(probeFiles());
}
