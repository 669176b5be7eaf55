// A page of help in a window of its own, from the program's own resources.
//
// Deletes itself when closed; main thread.
#pragma once

#include <QDialog>
#include <QString>

class HelpPage final : public QDialog {
    Q_OBJECT

public:
    // The page is a Markdown document, such as ":/help/disc-access.md".
    HelpPage(const QString& title, const QString& page, QWidget* parent);

    // The page that explains how Linux lets a user read discs; the one that the parent already has
    // comes to the front again.
    static HelpPage* openDiscAccess(QWidget* parent);
};
