// Shows how far something is: a line that is drawn over on a terminal, else a line at every tenth
// of the way and after every few seconds.
//
// Owned by a command, lives on the main thread. Asks for the state whenever it prints.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

#include "ProgressText.h"
#include "TextOutput.h"

class ProgressPrinter final : public QObject {
    Q_OBJECT

public:
    ProgressPrinter(TextOutput& output, std::function<ProgressState()> state,
                    QObject* parent = nullptr);

    void start();
    // To be called when the state has moved; prints what is due.
    void update();
    // Removes a line that is drawn; nothing more is printed until the next start.
    void stop();
    // Prints a line of its own above the progress.
    void say(const QString& line);

private:
    void draw(const ProgressState& state);
    void erase();

    TextOutput& m_output;
    std::function<ProgressState()> m_state;
    QTimer m_timer;
    QString m_drawn;
    QElapsedTimer m_sincePrinted;
    int m_printedTenth = 0;
};
