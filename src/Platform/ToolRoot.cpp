#include "ToolRoot.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <optional>

namespace {

std::optional<QString> held(const QString& root, const QString& fixedPath) {
    const QString candidate = QDir::cleanPath(root + fixedPath);
    const QFileInfo info(candidate);
    if (!info.exists() || info.isDir()) {
        return std::nullopt;
    }
    return candidate;
}

// Not the application object's idea of it: this also works before there is one.
QString programFolder() {
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path();
}

}  // namespace

QString ToolRoot::resolve(const QString& fixedPath) {
    const QString chosen = QFile::decodeName(qgetenv("SPINDRIFT_TOOL_ROOT"));
    if (!chosen.isEmpty()) {
        if (QDir::cleanPath(chosen) == QLatin1String("/")) {
            return fixedPath;
        }
        if (const auto tool = held(QDir(chosen).absolutePath(), fixedPath)) {
            return *tool;
        }
    }
    return held(programFolder() + QStringLiteral("/" SPINDRIFT_LIBEXEC_FROM_BIN), fixedPath)
        .value_or(fixedPath);
}
