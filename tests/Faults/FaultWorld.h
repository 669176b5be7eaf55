// The world of one faulty run: a practice drive with a small disc, folders for all that the program
// writes, and the library that makes calls fail.
//
// Owned by one test, on its main thread. run() starts the built program and waits for its end;
// left() tells what there is afterwards.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <string>

#include "FaultState.h"
#include "OtherFileSystem.h"
#include "TestFolder.h"

class CliProgram;

class FaultWorld final {
public:
    struct Ending {
        int status = 0;       // -1: by a signal
        std::string says;     // standard error, with the names of the folders and images shortened
        unsigned calls = 0;   // that the rule was about
        unsigned faults = 0;  // that happened
    };
    // What the test does while a call pauses.
    using Meanwhile = std::function<void(CliProgram&)>;

    explicit FaultWorld(qsizetype discBytes);
    ~FaultWorld();
    FaultWorld(const FaultWorld&) = delete;
    FaultWorld& operator=(const FaultWorld&) = delete;

    // Words of a command line, in which "SAME" and "OTHER" stand for the image to write, here and
    // on another file system. Every process of ours has ended when it returns.
    Ending run(const QString& words, const std::string& rule = {}, const Meanwhile& meanwhile = {});

    // The words as they are given to the program.
    QStringList arguments(const QString& words) const;

    // Every file that there is, such as "same/disc.iso=disc tmp/ID.cdr=part".
    std::string left() const;

    // Puts back what the test took, then makes one more image in the same place. Empty, or what was
    // wrong with it.
    std::string nextRip(const QString& target);

    bool hasOther() const { return m_other.exists(); }
    QString same() const { return folder.path(QStringLiteral("same")); }
    QString other() const { return m_other.path(); }
    QString drive() const { return folder.path(QStringLiteral("drive")); }
    void writeDrive(const QByteArray& moreKeys = {}) const;
    void putIn(const QByteArray& disc) const;
    // What "History", "Nickname", "NicknameRemoval", "Preferences" and "NewPreferences" begin with.
    void writeStores(const std::string& store) const;
    // A file of other content, where the image is to be.
    void writeOld(const QString& target) const;

    const QByteArray& disc() const { return m_disc; }
    TestFolder folder;

private:
    std::string shortened(QByteArray text) const;
    std::string contentOf(const QString& path) const;
    void waitForTheLastProcess() const;

    const OtherFileSystem m_other;
    const QByteArray m_disc;
    FaultState* const m_state;
};

#ifdef SPINDRIFT_SANITIZED
#define NEEDS_PRELOADING() GTEST_SKIP() << "the sanitizers want to be loaded before all else"
#else
#define NEEDS_PRELOADING() static_cast<void>(0)
#endif
