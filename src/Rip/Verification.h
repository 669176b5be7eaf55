// The second pass over a disc: images it again and compares the digests of the two images.
//
// Blocks for as long as the tools take: runs on a thread of its own. Knows nothing of the rip
// engine; the caller's list of processes lets a cancellation end the tool that runs.
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "VerifyProcesses.h"
#include "VerifyStatus.h"

namespace Verification {

struct Job {
    QString bsdName;  // without "/dev/"
    QString image;    // absolute path of the saved image; never changed
    QString temporaryFolder;
    std::shared_ptr<VerifyProcesses> processes;
};

// Hands the verdict over, then removes the temporary second image.
void run(const Job& job, const std::function<void(const VerifyStatus&)>& handOver);

// The verdict when the disc could not be read a second time.
VerifyStatus notReadAgain();

// Images the disc to <base>.cdr; true when the tool ended with status 0.
bool reimage(const QString& bsdName, const QString& base, VerifyProcesses& processes);

// The file's SHA-256 digest as the tool prints it, in hexadecimal; absent on any failure.
std::optional<QString> sha256(const QString& path, VerifyProcesses& processes);

// The digest in the tool's output; absent when there is none.
std::optional<QString> parseDigest(const QByteArray& output);

}  // namespace Verification
