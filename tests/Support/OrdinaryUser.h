// Makes the process an ordinary user for the length of a block, where root would be allowed all.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <QStringList>

class OrdinaryUser final {
public:
    // The user owns these paths. Root becomes "nobody"; anybody else stays who they are.
    explicit OrdinaryUser(const QStringList& paths) {
        constexpr uid_t nobody = 65534;
        if (geteuid() != 0) {
            return;
        }
        for (const QString& path : paths) {
            EXPECT_EQ(chown(QFile::encodeName(path).constData(), nobody, gid_t(-1)), 0);
        }
        EXPECT_EQ(seteuid(nobody), 0);
        m_changed = true;
    }
    ~OrdinaryUser() {
        if (m_changed) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    bool m_changed = false;
};
