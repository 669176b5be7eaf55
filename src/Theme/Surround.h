// What is painted around a view: a widget that lies directly behind it and is larger than it.
//
// A widget paints only inside of itself and of its parents, so a glow or a shadow needs a widget of
// its own: next to the view or, where the view's parent leaves no room, next to the nearest
// ancestor that does. It follows the view around and hides with it, and neither the mouse nor the
// keyboard feels it. Whoever makes one deletes it, before or after the view; main thread.
#pragma once

#include <QPointer>
#include <QRect>
#include <QWidget>
#include <vector>

class Surround : public QWidget {
    Q_OBJECT

protected:
    enum class Layer { Shadow, Glow };  // from the view backwards

    // The derived constructor calls place().
    Surround(QWidget* view, Layer layer);

    QWidget* view() const { return m_view; }

    // The view's rectangle in this widget's coordinates. Empty when the view is gone.
    QRect frame() const;

    // How large to be around the view's rectangle; any coordinates.
    virtual QRect extent(const QRect& frame) const = 0;
    // How much of that must be seen.
    virtual QRect needed(const QRect& frame) const { return extent(frame); }
    // The view was moved, shown, hidden, enabled or disabled.
    virtual void placed() {}

    void place();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watch();

    QPointer<QWidget> m_view;
    Layer m_layer;
    std::vector<QPointer<QWidget>> m_watched;
    bool m_placing = false;
};
