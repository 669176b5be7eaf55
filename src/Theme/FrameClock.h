// Tells a widget when to draw the next frame of an animation, thirty times a second.
//
// Owned by its widget; main thread. All clocks tick together, so that what moves in one window is
// painted in one go. A clock ticks only while something is wanted and can be seen: not while its
// widget is hidden or disabled, not while the window is minimised or covered completely, and not
// while motion is reduced. Time goes on meanwhile: a late or left-out frame changes no speed.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

class QWidget;
class QWindow;

class FrameClock final : public QObject {
    Q_OBJECT

public:
    explicit FrameClock(QWidget* widget);
    ~FrameClock() override;

    // Whether there is anything to animate; at first there is not.
    void setWanted(bool wanted);
    bool isRunning() const { return m_running; }

    // Seconds since the clock was made or restarted.
    double seconds() const;
    void restart();

    // The desktop's wish to see no motion: animations then stand still. Off until set; for the
    // whole program, at once.
    static void setReducedMotion(bool reduced);
    static bool isMotionReduced();

    // Replaces the monotonic time, in seconds; an empty function brings it back.
    static void setTimeSource(std::function<double()> now);

signals:
    void frame();
    // Motion was reduced or allowed again.
    void motionChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watchWindow();
    void refresh();

    QWidget* m_widget;
    QPointer<QWidget> m_window;
    QPointer<QWindow> m_surface;
    double m_start;
    bool m_wanted = false;
    bool m_running = false;
};
