#include "SymbolIcon.h"

#include <QPaintEvent>
#include <QPainter>

#include "Symbol.h"
#include "TextStyle.h"

SymbolIcon::SymbolIcon(const QString& symbol, double points, Appearance::Role role, QWidget* parent)
    : QWidget(parent), m_symbol(symbol), m_points(TextStyle::length(points)), m_role(role) {
    const int side = Symbol::side(m_points);
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
    painter.drawPixmap(0, 0,
                       Symbol::pixmap(m_symbol, m_points, Appearance::color(m_role, palette()),
                                      devicePixelRatioF()));
}

#include "moc_SymbolIcon.cpp"
