// The About panel: icon, name, version and one line of credits.
//
// Owned by the application's object, which shows one at most; main thread.
#pragma once

#include <QDialog>

class AboutPanel final : public QDialog {
    Q_OBJECT

public:
    explicit AboutPanel(QWidget* parent = nullptr);
};
