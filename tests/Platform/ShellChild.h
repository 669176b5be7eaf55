// Children that run a shell script, and what became of them.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <QByteArray>
#include <QDir>
#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>

#include "ChildProcess.h"

inline ChildProcess shell(const QString& script, const QStringList& more = {}) {
    return ChildProcess(QStringLiteral("/bin/sh"),
                        QStringList{QStringLiteral("-c"), script} + more);
}

// What the script printed on standard output and its status, by wait() and readToEnd().
struct Outcome {
    int status = -1;
    QByteArray output;
    QByteArray error;
};

inline Outcome outcome(ChildProcess& child) {
    child.setStream(ChildProcess::Output::Standard, ChildProcess::Stream::Pipe);
    child.setStream(ChildProcess::Output::Error, ChildProcess::Stream::Pipe);
    EXPECT_EQ(child.launch(), std::nullopt);
    Outcome result;
    result.status = child.wait();
    result.output = child.readToEnd(ChildProcess::Output::Standard);
    result.error = child.readToEnd(ChildProcess::Output::Error);
    return result;
}

// The pipes that this program holds an end of.
inline QSet<QString> openPipes() {
    QSet<QString> pipes;
    const QDir folder(QStringLiteral("/proc/self/fd"));
    for (const QString& name : folder.entryList(QDir::AllEntries | QDir::System)) {
        char target[256] = {};
        if (readlink(folder.filePath(name).toUtf8().constData(), target, sizeof target - 1) > 0 &&
            QByteArray(target).startsWith("pipe:")) {
            pipes.insert(QString::fromLatin1(target));
        }
    }
    return pipes;
}
