// Gives a button's text the colour of a role, also when its window changes between light and dark.
//
// Owned by the button, on the main thread.
#pragma once

#include <QObject>
#include <QPushButton>

#include "Appearance.h"

class ButtonTextColor final : public QObject {
    Q_OBJECT

public:
    ButtonTextColor(Appearance::Role role, QPushButton* button);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void apply();

    QPushButton* m_button;
    Appearance::Role m_role;
    bool m_applying = false;
};
