#include "SymbolIcon.h"

#include <QPaintEvent>
#include <QPainter>

#include "TextStyle.h"

#if __has_include("Symbol.h")
#include "Symbol.h"
#endif

SymbolIcon::SymbolIcon(const QString& symbol, double points, Appearance::Role role, QWidget* parent)
    : QWidget(parent), m_symbol(symbol), m_role(role) {
    const int side = qRound(TextStyle::length(points));
    m_size = QSize(side, side);
    setFixedSize(m_size);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void SymbolIcon::setSymbol(const QString& symbol) {
    m_symbol = symbol;
    update();
}

void SymbolIcon::setRole(Appearance::Role role) {
    m_role = role;
    update();
}

void SymbolIcon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(Appearance::color(m_role, palette()));
    painter.drawEllipse(rect().adjusted(1, 1, -2, -2));
}
