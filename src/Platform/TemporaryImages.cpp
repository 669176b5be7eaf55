#include "TemporaryImages.h"

#include <QDir>

#include "AbandonedFiles.h"

namespace {

AbandonedFiles::Names namesOf(TemporaryImages::Purpose purpose) {
    using TemporaryImages::Purpose;
    const QString prefix = purpose == Purpose::Verification ? QStringLiteral("spindrift-verify-")
                           : purpose == Purpose::SpeedTest  ? QStringLiteral("spindrift-speedtest-")
                                                            : QStringLiteral("spindrift-");
    return {prefix, QStringLiteral(".cdr")};
}

}  // namespace

QString TemporaryImages::freshBase(Purpose purpose, const QString& folder) {
    return QDir(folder).filePath(namesOf(purpose).prefix + UserFolders::freshIdentifier());
}

void TemporaryImages::removeAbandoned(const QString& folder) {
    AbandonedFiles::removeFrom(folder, namesOf(Purpose::Verification));
    AbandonedFiles::removeFrom(folder, namesOf(Purpose::SpeedTest));
}

QStringList TemporaryImages::leftByRips(const QString& folder) {
    return AbandonedFiles::unclaimed(folder, namesOf(Purpose::Rip));
}
