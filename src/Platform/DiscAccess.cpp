#include "DiscAccess.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMetaObject>
#include <QPointer>
#include <QStandardPaths>

#include "ChildProcess.h"

namespace DiscAccess {

namespace {

// pkexec's own statuses: 126 when the user dismissed the question, 127 when it could not be asked
// or was answered wrongly.
Outcome outcomeOf(int status) {
    switch (status) {
        case 0:
            return Outcome::Granted;
        case 126:
            return Outcome::Declined;
        case 127:
            return Outcome::Unavailable;
        default:
            return Outcome::Failed;
    }
}

}  // namespace

std::optional<Programs> programs() {
    const QString pkexec = QStandardPaths::findExecutable(
        QStringLiteral("pkexec"), {QStringLiteral("/usr/bin"), QStringLiteral("/bin")});
    const QString granter =
        QDir::cleanPath(QCoreApplication::applicationDirPath() +
                        QStringLiteral("/" SPINDRIFT_LIBEXEC_FROM_BIN "/grant-disc-access"));
    if (pkexec.isEmpty() || !QFileInfo(granter).isExecutable()) {
        return std::nullopt;
    }
    return Programs{pkexec, granter};
}

void request(QObject* context, const std::function<void(Outcome)>& handler) {
    request(programs(), context, handler);
}

void request(const std::optional<Programs>& programs, QObject* context,
             const std::function<void(Outcome)>& handler) {
    if (!programs) {
        handler(Outcome::Unavailable);
        return;
    }
    const auto child =
        std::make_shared<ChildProcess>(programs->pkexec, QStringList{programs->granter});
    child->setStream(ChildProcess::Output::Standard, ChildProcess::Stream::Null);
    child->setStream(ChildProcess::Output::Error, ChildProcess::Stream::Null);
    child->setExitHandler([context = QPointer<QObject>(context), handler](int status) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [context, handler, status] {
                if (context) {
                    handler(outcomeOf(status));
                }
            },
            Qt::QueuedConnection);
    });
    if (child->launch()) {
        handler(Outcome::Unavailable);
    }
}

}  // namespace DiscAccess
