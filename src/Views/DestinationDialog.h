// The save dialog that chooses where the next image goes.
//
// A window-modal sheet of the main window, on the main thread; open it with open(), and it deletes
// itself when it is closed.
#pragma once

#include <QFileDialog>

class DestinationDialog final : public QFileDialog {
    Q_OBJECT

public:
    // Starts in the folder that an earlier dialog of this run ended in, else in the home folder.
    DestinationDialog(const QString& defaultFileName, QWidget* parent);

    // The path with ".iso" at its end, whatever was typed. The path as it stands when that would
    // name another file that is there: nobody was asked whether to replace that one.
    static QString withExtension(const QString& path);

signals:
    void chosen(const QString& path);
};
