// A ring around a widget that has the keyboard's focus and could not show it by itself.
//
// Owned by its parent widget, an ancestor of the watched one with room around it; main thread.
#pragma once

#include <QWidget>

class FocusRing final : public QWidget {
    Q_OBJECT

public:
    FocusRing(QWidget* watched, QWidget* parent);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void follow();

    QWidget* m_watched;
};
