#include "DestinationDialog.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString& lastFolder() {
    static QString folder;
    return folder;
}

}  // namespace

DestinationDialog::DestinationDialog(const QString& defaultFileName, QWidget* parent)
    : QFileDialog(parent) {
    setObjectName(QStringLiteral("destinationDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setNameFilter(tr("ISO image (*.iso)"));
    setDefaultSuffix(QStringLiteral("iso"));
    setDirectory(QFileInfo(lastFolder()).isDir() && !lastFolder().isEmpty() ? lastFolder()
                                                                            : QDir::homePath());
    // This dialog takes double quotes for marks between several files.
    selectFile(QString(defaultFileName).replace(QLatin1Char('"'), QLatin1Char('\'')));
    connect(this, &QFileDialog::fileSelected, this, [this](const QString& path) {
        lastFolder() = QFileInfo(path).absolutePath();
        emit chosen(withExtension(QFileInfo(path).absoluteFilePath()));
    });
}

QString DestinationDialog::withExtension(const QString& path) {
    const QString extension = QStringLiteral(".iso");
    if (path.endsWith(extension, Qt::CaseInsensitive) || QFileInfo::exists(path + extension)) {
        return path;
    }
    return path + extension;
}

#include "moc_DestinationDialog.cpp"
