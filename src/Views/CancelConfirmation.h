// The sheet that asks before a rip or a verification is cancelled.
//
// A window-modal sheet of the main window, on the main thread; open it with open(), and it deletes
// itself when it is closed.
#pragma once

#include <QMessageBox>

class CancelConfirmation final : public QMessageBox {
    Q_OBJECT

public:
    enum class Subject { Rip, Verification };

    CancelConfirmation(Subject subject, QWidget* parent);

    // Draws the sheet for what runs now.
    void setSubject(Subject subject);

signals:
    // The destructive button was pressed.
    void confirmed();

protected:
    void changeEvent(QEvent* event) override;

private:
    void tintIcon();

    QPushButton* m_destructive;
};
