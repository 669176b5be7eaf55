// Turns SIGINT, SIGTERM and SIGHUP into a signal on the main thread, and SIGPIPE into nothing.
//
// One at a time, owned by the program's entry, lives on the main thread. A signal that the parent
// has ignored, as nohup does, stays ignored. Child processes get the default actions.
//
// Until begin() there is nothing to undo and maybe nobody to tell, as the main thread waits for a
// drive that may hang: such a signal ends the process at once. After it, the first signal is told,
// and whoever is told has two seconds to end the program; then, or at a second signal, a thread of
// its own ends the process together with the files that are RemovedAtExit.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>

class Interruption final : public QObject {
    Q_OBJECT

public:
    // How the process ends when the program has not ended by itself.
    struct Ending {
        int (*status)(int signalNumber);  // called within the signal's handler, too
        void (*lastWords)() = [] {};      // any thread
    };

    explicit Interruption(Ending ending, QObject* parent = nullptr);
    ~Interruption() override;

    // From now on signals are told instead of obeyed.
    static void begin();

    // All is undone or done: from now on signals change nothing.
    void end();

    // Whether a signal has come, from the moment it came; any thread.
    static bool happened();

    // The exit status of a program that ends because of the last signal.
    static int exitStatus();

    // From now on this object learns of nothing before an interruption that came earlier has been
    // told. A terminal's Ctrl-C ends the disc tools too, and the wish to cancel must be known
    // before a tool's death is.
    void goBeforeEventsOf(QObject* object);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void interrupted();

private:
    struct Watch;

    void tell();
    static void watch(Watch& watch);

    std::unique_ptr<QSocketNotifier> m_news;
    std::shared_ptr<Watch> m_watch;  // with the thread that ends the process
};
