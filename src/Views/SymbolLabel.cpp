#include "SymbolLabel.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "SymbolIcon.h"

namespace {

// Symbols are drawn a little larger than the letters beside them.
constexpr double symbolScale = 1.2;
constexpr int gap = 6;

}  // namespace

SymbolLabel::SymbolLabel(const QString& symbol, const QString& text, const QFont& font,
                         Appearance::Role role, TextLabel::Wrap wrap, QWidget* parent)
    : QWidget(parent) {
    const int pixels = QFontInfo(font).pixelSize();
    const double points = symbolScale * pixels / TextStyle::length(1);
    m_icon = new SymbolIcon(symbol, points, role, this);
    m_text = new TextLabel(text, font, role, wrap, this);

    // The symbol stands beside the text's first line, however many follow.
    auto* iconColumn = new QVBoxLayout;
    const int lineHeight = QFontMetrics(font).height();
    iconColumn->setContentsMargins(0, qMax(0, (lineHeight - m_icon->height()) / 2), 0, 0);
    iconColumn->addWidget(m_icon);
    iconColumn->addStretch();

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(gap);
    row->addLayout(iconColumn);
    row->addWidget(m_text, 1, Qt::AlignTop);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(wrap == TextLabel::Wrap::Yes);
    setSizePolicy(policy);
    setAccessibleName(text);
}

const QString& SymbolLabel::symbol() const {
    return m_icon->symbol();
}

void SymbolLabel::setText(const QString& text) {
    m_text->setText(text);
    setAccessibleName(text);
}

void SymbolLabel::setSymbol(const QString& symbol) {
    m_icon->setSymbol(symbol);
}

void SymbolLabel::setRole(Appearance::Role role) {
    m_icon->setRole(role);
    m_text->setRole(role);
}
