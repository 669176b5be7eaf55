#include "IconButton.h"

#include <QEvent>

#include "Symbol.h"
#include "TextStyle.h"

IconButton::IconButton(const QString& symbol, double points, Appearance::Role role,
                       const QString& toolTip, QWidget* parent)
    : QToolButton(parent), m_symbol(symbol), m_role(role) {
    const int side = Symbol::side(TextStyle::length(points));
    setIconSize(QSize(side, side));
    setAutoRaise(true);
    setFocusPolicy(Qt::StrongFocus);
    setToolTip(toolTip);
    setAccessibleName(toolTip);
    setAccessibleDescription(toolTip);
    tint();
}

void IconButton::changeEvent(QEvent* event) {
    QToolButton::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        tint();
    }
}

void IconButton::tint() {
    setIcon(Symbol::icon(m_symbol, Appearance::color(m_role, palette())));
}

#include "moc_IconButton.cpp"
