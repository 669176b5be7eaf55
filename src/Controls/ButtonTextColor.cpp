#include "ButtonTextColor.h"

#include <QEvent>

ButtonTextColor::ButtonTextColor(Appearance::Role role, QPushButton* button)
    : QObject(button), m_button(button), m_role(role) {
    button->installEventFilter(this);
    apply();
}

bool ButtonTextColor::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::PaletteChange && !m_applying) {
        apply();
    }
    return QObject::eventFilter(watched, event);
}

void ButtonTextColor::apply() {
    m_applying = true;
    // Only the one role is set, so that all others still come from the parent.
    QPalette own;
    own.setColor(QPalette::ButtonText, Appearance::color(m_role, m_button->palette()));
    m_button->setPalette(own);
    m_applying = false;
}

#include "moc_ButtonTextColor.cpp"
