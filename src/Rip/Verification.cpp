#include "Verification.h"

#include <QCoreApplication>
#include <QFile>

#include "ImagingTool.h"
#include "RemovedAtExit.h"
#include "StrictUtf8.h"
#include "TemporaryImages.h"
#include "ToolRoot.h"

namespace {

VerifyStatus compare(const Verification::Job& job, const QString& base) {
    if (!Verification::reimage(job.bsdName, base, *job.processes)) {
        return Verification::notReadAgain();
    }
    const auto saved = Verification::sha256(job.image, *job.processes);
    const auto second =
        saved ? Verification::sha256(base + QStringLiteral(".cdr"), *job.processes) : std::nullopt;
    if (!saved || !second) {
        return VerifyStatus::failed(
            QCoreApplication::translate("Verification", "Could not compute checksum."));
    }
    return *saved == *second ? VerifyStatus::matched() : VerifyStatus::mismatched();
}

}  // namespace

void Verification::run(const Job& job, const std::function<void(const VerifyStatus&)>& handOver) {
    const QString base =
        TemporaryImages::freshBase(TemporaryImages::Purpose::Verification, job.temporaryFolder);
    const RemovedAtExit second(base + QStringLiteral(".cdr"));
    handOver(compare(job, base));
    QFile::remove(base + QStringLiteral(".cdr"));
}

VerifyStatus Verification::notReadAgain() {
    return VerifyStatus::failed(
        QCoreApplication::translate("Verification", "Could not re-read the disc to verify."));
}

bool Verification::reimage(const QString& bsdName, const QString& base,
                           VerifyProcesses& processes) {
    return ImagingTool(bsdName, base).runSilently([&processes](auto process) {
        processes.track(std::move(process));
    });
}

std::optional<QString> Verification::sha256(const QString& path, VerifyProcesses& processes) {
    const auto process = std::make_shared<ChildProcess>(
        ToolRoot::resolve(QStringLiteral("/usr/bin/shasum")),
        QStringList{QStringLiteral("-a"), QStringLiteral("256"), path});
    process->setStream(ChildProcess::Output::Standard, ChildProcess::Stream::Pipe);
    if (process->launch()) {
        return std::nullopt;
    }
    processes.track(process);
    if (process->wait() != 0) {
        return std::nullopt;
    }
    return parseDigest(process->readToEnd(ChildProcess::Output::Standard));
}

std::optional<QString> Verification::parseDigest(const QByteArray& output) {
    const QStringList pieces =
        strictUtf8(output).value_or(QString()).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return pieces.isEmpty() ? std::nullopt : std::optional(pieces.first());
}
