// The settings window: a frame around the settings form. Main thread; deletes itself when closed.
#pragma once

#include <QWidget>

class SettingsWindow final : public QWidget {
    Q_OBJECT

public:
    explicit SettingsWindow(QWidget* parent = nullptr);
};
