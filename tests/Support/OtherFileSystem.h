// A folder on another file system than the one that holds the tests' folders.
#pragma once

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <memory>

#include "TestFolder.h"

class OtherFileSystem final {
public:
    // Absent path when this machine has none that is writable.
    explicit OtherFileSystem(const TestFolder& folder) {
        for (const char* place : {"/dev/shm", "/run/shm", "/run", "/var/tmp", "/tmp"}) {
            auto candidate = std::make_unique<QTemporaryDir>(
                QString::fromLatin1(place) + QStringLiteral("/spindrift-test-XXXXXX"));
            if (candidate->isValid() && device(candidate->path()) != device(folder.path())) {
                m_folder = std::move(candidate);
                return;
            }
        }
    }

    bool exists() const { return m_folder != nullptr; }
    QString path(const char* name = "") const {
        return m_folder->filePath(QString::fromUtf8(name));
    }

private:
    static dev_t device(const QString& path) {
        struct stat status = {};
        return stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_dev : 0;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

#define NEEDS_ANOTHER_FILE_SYSTEM(other)                                      \
    do {                                                                      \
        if (!(other).exists()) {                                              \
            GTEST_SKIP() << "no second writable file system on this machine"; \
        }                                                                     \
    } while (false)
