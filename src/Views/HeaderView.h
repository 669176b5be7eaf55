// The head of the main window: icon, title, subtitle and the way to the diagnostics.
//
// Owned by the main window; main thread.
#pragma once

#include <QWidget>

class IconButton;
class TextLabel;

class HeaderView final : public QWidget {
    Q_OBJECT

public:
    explicit HeaderView(QWidget* parent = nullptr);

    void setRetro(bool retro);

signals:
    void diagnosticsRequested();

private:
    TextLabel* m_title;
    TextLabel* m_subtitle;
    IconButton* m_diagnostics;
};
