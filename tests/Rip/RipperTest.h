// What the tests of the rip engine share: a world of stub tools, an engine, its changes.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <QFile>
#include <QRegularExpression>
#include <QTimer>
#include <memory>

#include "BackgroundThread.h"
#include "ISORipper.h"
#include "RecordedChanges.h"
#include "StubTools.h"
#include "TestFolder.h"
#include "Waiting.h"

class RipperTest : public testing::Test {
protected:
    static constexpr const char* hdiutil = "/usr/bin/hdiutil";
    static constexpr const char* shasum = "/usr/bin/shasum";
    static constexpr const char* pkill = "/usr/bin/pkill";

    RipperTest() {
        stub(pkill, "exec /usr/bin/pkill \"$@\"");
        stub(shasum, "exec /usr/bin/sha256sum \"$3\"");
        ripper = std::make_unique<ISORipper>();
        changes = std::make_unique<RecordedChanges>(*ripper);
    }

    // Nothing that a test has started goes on in the next one's world.
    ~RipperTest() override {
        EXPECT_TRUE(BackgroundThread::waitForPassing(std::chrono::minutes(1)));
    }

    // A script; in hdiutil's, $out is the file to write and $pass is "rip" or "verify".
    void stub(const char* fixedPath, const QByteArray& body) const {
        StubTools::write(folder, QString::fromLatin1(fixedPath),
                         "out=\"$8\"; pass=rip\n"
                         "[ \"$6\" = -puppetstrings ] || { out=\"$7.cdr\"; pass=verify; }\n"
                         "world='" +
                             folder.path().toUtf8() +
                             "'\n"
                             // Ends when the test is over, too: its folder is gone then.
                             "wait_for() { while [ ! -e \"$world/$1\" ] && [ -d \"$world\" ]; do "
                             "/bin/sleep 0.01; done; }\n" +
                             body);
    }
    // Lets a script go on that has called wait_for NAME.
    void release(const char* name) const { folder.write(QString::fromLatin1(name), "go"); }
    bool waitForFile(const char* name) const {
        return waitUntil([&] { return QFile::exists(folder.path(QString::fromLatin1(name))); });
    }

    // The process identifier that a script has written there; 0 while there is none.
    pid_t pidIn(const char* name) const {
        const auto text = TestFolder::read(folder.path(QString::fromLatin1(name)));
        return text && text->endsWith('\n') ? text->trimmed().toInt() : 0;
    }

    QString destination() const { return folder.path(QStringLiteral("disc.iso")); }
    void start(bool thorough = false) { startTo(destination(), thorough); }
    void startTo(const QString& path, bool thorough = false) {
        ripper->start(QStringLiteral("disk4"), path, std::nullopt, thorough);
    }
    bool waitForEnd() {
        return waitUntil([&] { return !ripper->isRunning() && !ripper->isVerifying(); });
    }
    // A whole rip with this hdiutil.
    void rip(const QByteArray& body, bool thorough = false) {
        stub(hdiutil, body);
        start(thorough);
        ASSERT_TRUE(waitForEnd());
    }

    QStringList temporaryFiles() const { return TestFolder::list(folder.temporary()); }
    // The logged runs of one tool.
    QStringList runs(const char* name) const {
        return StubTools::log(folder).filter(
            QRegularExpression(u'^' + QString::fromLatin1(name) + u' '));
    }
    QString temporaryImage() const {
        return folder.temporary() + temporaryFiles().value(0, QStringLiteral("none"));
    }

    TestFolder folder;
    std::unique_ptr<ISORipper> ripper;
    std::unique_ptr<RecordedChanges> changes;
};

// Texts in failed expectations as people read them.
inline void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}

inline std::ostream& operator<<(std::ostream& stream, const QString& text) {
    PrintTo(text, &stream);
    return stream;
}
