#include "SymbolLabel.h"

#include <QEvent>
#include <QFontInfo>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "SymbolIcon.h"

namespace {

constexpr int gap = 6;

}  // namespace

SymbolLabel::SymbolLabel(const QString& symbol, const QString& text, const QFont& font,
                         Appearance::Role role, TextLabel::Wrap wrap, QWidget* parent)
    : QWidget(parent),
      m_icon(
          new SymbolIcon(symbol, QFontInfo(font).pixelSize() / TextStyle::length(1), role, this)),
      m_text(new TextLabel(text, role, wrap, this)),
      m_iconColumn(new QVBoxLayout) {
    m_text->setFont(font);
    m_iconColumn->addWidget(m_icon);
    m_iconColumn->addStretch();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(gap);
    row->addLayout(m_iconColumn);
    row->addWidget(m_text, 1, Qt::AlignTop);
    alignIcon();
}

SymbolLabel::SymbolLabel(const QString& symbol, const QString& text, Appearance::Role role,
                         TextLabel::Wrap wrap, QWidget* parent)
    : SymbolLabel(symbol, text, TextStyle::font(TextStyle::Style::Body), role, wrap, parent) {
    m_text->setFont(QFont());
    alignIcon();
}

const QString& SymbolLabel::symbol() const {
    return m_icon->symbol();
}

void SymbolLabel::setText(const QString& text) {
    m_text->setText(text);
}

void SymbolLabel::setSymbol(const QString& symbol) {
    m_icon->setSymbol(symbol);
}

void SymbolLabel::setRole(Appearance::Role role) {
    m_icon->setRole(role);
    m_text->setRole(role);
}

void SymbolLabel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        alignIcon();
    }
}

void SymbolLabel::alignIcon() {
    // The symbol stands beside the text's first line, however many follow.
    const int space = TextLabel::lineHeight(m_text->font()) - m_icon->height();
    m_iconColumn->setContentsMargins(0, qMax(0, space / 2), 0, 0);
}

#include "moc_SymbolLabel.cpp"
