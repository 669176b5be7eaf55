// The main window's last row: the start button, or the cancel button while something runs.
//
// Belongs to the column of the main window, whose children its buttons are: a gel button's glow
// needs room outside of the row. Main thread.
#pragma once

#include <QHBoxLayout>

class QPushButton;

class ActionRow final : public QHBoxLayout {
    Q_OBJECT

public:
    explicit ActionRow(QWidget* owner);

    struct State {
        bool working = false;   // a rip or a verification runs
        bool finished = false;  // a rip has finished: "Rip Again"
        bool ready = false;     // a disc and a destination are there
        bool retro = false;
    };
    void show(const State& state);

    // The press of the default button, which Return means.
    void triggerDefault();

signals:
    void startRequested();
    void cancelRequested();

private:
    QPushButton* m_start;
    QPushButton* m_cancel;
};
