#include "TextLabel.h"

#include <QEvent>

TextLabel::TextLabel(const QString& text, const QFont& font, Appearance::Role role, Wrap wrap,
                     QWidget* parent)
    : QLabel(parent), m_role(role) {
    setTextFormat(Qt::PlainText);
    setFont(font);
    setWrap(wrap);
    setText(text);
    applyRole();
}

void TextLabel::setRole(Appearance::Role role) {
    if (m_role != role) {
        m_role = role;
        applyRole();
    }
}

void TextLabel::setWrap(Wrap wrap) {
    setWordWrap(wrap == Wrap::Yes);
}

void TextLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange) {
        applyRole();
    }
}

void TextLabel::applyRole() {
    if (m_applying) {
        return;
    }
    m_applying = true;
    // Only the one role is set, so that all others still come from the parent.
    QPalette own;
    own.setColor(QPalette::WindowText, Appearance::color(m_role, palette()));
    setPalette(own);
    m_applying = false;
}
