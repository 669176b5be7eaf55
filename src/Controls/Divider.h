// A thin line between two parts of a window. Owned by its parent widget; main thread.
#pragma once

#include <QWidget>

class Divider final : public QWidget {
    Q_OBJECT

public:
    explicit Divider(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
