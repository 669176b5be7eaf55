// Turns SIGINT, SIGTERM and SIGHUP into a signal on the main thread, and SIGPIPE into nothing.
//
// One at a time, owned by the program's entry, lives on the main thread. A signal that the parent
// has ignored, as nohup does, stays ignored. Child processes get the default actions.
//
// Until begin() there is nothing to undo and maybe nobody to tell, as the main thread waits for a
// drive that may hang: such a signal ends the process at once, with the status of a cancellation.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>

class Interruption final : public QObject {
    Q_OBJECT

public:
    explicit Interruption(QObject* parent = nullptr);
    ~Interruption() override;

    // From now on signals are told instead of obeyed.
    static void begin();

    // Whether a signal has come, from the moment it came; any thread.
    static bool happened();

    // From now on this object learns of nothing before an interruption that came earlier has been
    // told. A terminal's Ctrl-C ends the disc tools too, and the wish to cancel must be known
    // before a tool's death is.
    void goBeforeEventsOf(QObject* object);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    // At least once after the last of several signals that came together.
    void interrupted();

private:
    void tell();

    std::unique_ptr<QSocketNotifier> m_news;
};
