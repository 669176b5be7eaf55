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
    selectFile(offeredName(defaultFileName));
    connect(this, &QFileDialog::fileSelected, this, [this](const QString& path) {
        lastFolder() = QFileInfo(path).absolutePath();
        emit chosen(withExtension(QFileInfo(path).absoluteFilePath()));
    });
}

QString DestinationDialog::offeredName(const QString& defaultFileName) {
    // The toolkit's dialog takes double quotes for marks between several files.
    QString name = defaultFileName;
    name.replace(QLatin1Char('"'), QLatin1Char('\''));
    // File systems allow 255 bytes. The names of some discs are longer in UTF-8, and only the end
    // of the rip would tell.
    constexpr qsizetype longest = 255;
    const QString extension = QStringLiteral(".iso");
    QString stem = name.chopped(extension.size());
    while ((stem + extension).toUtf8().size() > longest) {
        stem.chop(stem.back().isLowSurrogate() ? 2 : 1);
    }
    return stem + extension;
}

QString DestinationDialog::withExtension(const QString& path) {
    const QString extension = QStringLiteral(".iso");
    if (path.endsWith(extension, Qt::CaseInsensitive) || QFileInfo::exists(path + extension)) {
        return path;
    }
    return path + extension;
}
