// A file system in memory of a given size, mounted over a folder; needs root.
#pragma once

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <QByteArray>
#include <QFile>
#include <QString>

class SmallFileSystem final {
public:
    SmallFileSystem(const QString& folder, const char* size)
        : m_folder(QFile::encodeName(folder)),
          m_isMounted(mount("none", m_folder.constData(), "tmpfs", 0,
                            QByteArray("size=").append(size).constData()) == 0) {}
    ~SmallFileSystem() {
        // Lazily: a thread of the code under test may close its file a moment later.
        if (m_isMounted) {
            EXPECT_EQ(umount2(m_folder.constData(), MNT_DETACH), 0);
        }
    }
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;

    bool isMounted() const { return m_isMounted; }

private:
    QByteArray m_folder;
    bool m_isMounted;
};

#define NEEDS_A_SMALL_FILE_SYSTEM(small)                               \
    do {                                                               \
        if (!(small).isMounted()) {                                    \
            GTEST_SKIP() << "mounting a small file system needs root"; \
        }                                                              \
    } while (false)
