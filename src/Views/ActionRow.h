// The main window's last row: the start button, or the cancel button while something runs.
//
// Owned by the main window; main thread.
#pragma once

#include <QString>
#include <QWidget>

class QPushButton;

class ActionRow final : public QWidget {
    Q_OBJECT

public:
    explicit ActionRow(QWidget* parent = nullptr);

    struct State {
        bool working = false;   // a rip or a verification runs
        bool finished = false;  // a rip has finished: "Rip Again"
        bool ready = false;     // a disc and a destination are there
        bool retro = false;
    };
    void show(const State& state);
    using QWidget::show;

    // The press of the default button, which Return means.
    void triggerDefault();

signals:
    void startRequested();
    void cancelRequested();

private:
    QPushButton* m_start;
    QPushButton* m_cancel;
};
