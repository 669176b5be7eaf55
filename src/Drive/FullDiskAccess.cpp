#include "FullDiskAccess.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <optional>

#include "UserFolders.h"

namespace {

std::optional<QString> practiceFolder() {
    const QString folder = QFile::decodeName(qgetenv("SPINDRIFT_PRACTICE_DRIVE"));
    return folder.isEmpty() ? std::nullopt : std::optional(folder);
}

QString practiceImage(const QString& folder) {
    return folder + QStringLiteral("/disc.iso");
}

bool practiceDriveDenies(const QString& folder) {
    QFile file(folder + QStringLiteral("/drive.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const auto json = nlohmann::json::parse(file.readAll().toStdString(), nullptr, false);
    if (!json.is_object()) {
        return false;
    }
    const auto denies = json.find("denyAccess");
    return denies != json.end() && denies->is_boolean() && denies->get<bool>();
}

bool exists(const QString& path) {
    return QFileInfo::exists(path);
}

}  // namespace

QStringList FullDiskAccess::probeFiles() {
    const QString home = UserFolders::home();
    QStringList files{home + QStringLiteral("/Library/Application Support/com.apple.TCC/TCC.db"),
                      home + QStringLiteral("/Library/Safari/CloudTabs.db")};
    if (const auto folder = practiceFolder()) {
        return files << practiceImage(*folder) << *folder;
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
    const auto folder = practiceFolder();
    if (folder && (path == practiceImage(*folder) || path == *folder) &&
        practiceDriveDenies(*folder)) {
        return EACCES;
    }
    // Non-blocking: a plain open of a drive would pull its tray in.
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return errno;
    }
    close(descriptor);
    return 0;
}

bool FullDiskAccess::decide(const QStringList& files, const Open& open) {
    for (const QString& file : files) {
        if (!exists(file)) {
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
